# zlib, minizip and GoogleTest are built from sources, which tools/setup fetches.
# All of it is other people's code: no warnings of ours, headers as system headers.

set(RYN_ZLIB_DIR "${CMAKE_SOURCE_DIR}/build/deps/zlib" CACHE PATH "Sources of zlib")
if(NOT EXISTS "${RYN_ZLIB_DIR}/inflate.c")
  message(FATAL_ERROR "No zlib sources in ${RYN_ZLIB_DIR}: run tools/setup, or set RYN_ZLIB_DIR")
endif()
# Not the compiler's, which takes 14 KB more of the program and does not guard its stack, where packs come from the
# network. As fast, with speed for its inner loop alone. NO_GZIP leaves out a format that nothing here has.
set(RYN_ZLIB_SOURCES adler32.c compress.c crc32.c deflate.c inffast.c inflate.c inftrees.c trees.c uncompr.c zutil.c)
list(TRANSFORM RYN_ZLIB_SOURCES PREPEND "${RYN_ZLIB_DIR}/")
add_library(ryn_zlib STATIC ${RYN_ZLIB_SOURCES})
target_compile_definitions(ryn_zlib PRIVATE NO_GZIP)
target_compile_options(ryn_zlib PRIVATE -w -Os -fstack-protector-strong)
set_source_files_properties("${RYN_ZLIB_DIR}/inffast.c" PROPERTIES COMPILE_OPTIONS -O2)
set_target_properties(ryn_zlib PROPERTIES UNITY_BUILD OFF)
target_include_directories(ryn_zlib SYSTEM PUBLIC "${RYN_ZLIB_DIR}")

set(RYN_MINIZIP_DIR "${CMAKE_SOURCE_DIR}/build/deps/minizip" CACHE PATH "Sources of minizip")
if(NOT EXISTS "${RYN_MINIZIP_DIR}/unzip.c")
  message(FATAL_ERROR "No minizip sources in ${RYN_MINIZIP_DIR}: run tools/setup, or set RYN_MINIZIP_DIR")
endif()
# The reader alone. NOUNCRYPT leaves out its decryption: packs are never encrypted.
add_library(minizip_unzip STATIC "${RYN_MINIZIP_DIR}/unzip.c" "${RYN_MINIZIP_DIR}/ioapi.c")
target_compile_definitions(minizip_unzip PRIVATE NOUNCRYPT)
target_compile_options(minizip_unzip PRIVATE -w -Os -fstack-protector-strong)
set_target_properties(minizip_unzip PROPERTIES UNITY_BUILD OFF)
target_include_directories(minizip_unzip SYSTEM INTERFACE "${RYN_MINIZIP_DIR}")
target_link_libraries(minizip_unzip PUBLIC ryn_zlib)
