# zlib comes with the packages of the compilers, minizip and GoogleTest as sources that tools/setup fetches.
# All of it is other people's code: no warnings of ours, headers as system headers.

find_library(RYN_ZLIB_LIBRARY NAMES libz.a REQUIRED)
find_path(RYN_ZLIB_INCLUDE_DIR NAMES zlib.h REQUIRED)
add_library(ryn_zlib STATIC IMPORTED)
set_target_properties(ryn_zlib PROPERTIES
  IMPORTED_LOCATION "${RYN_ZLIB_LIBRARY}"
  INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${RYN_ZLIB_INCLUDE_DIR}")

set(RYN_MINIZIP_DIR "${CMAKE_SOURCE_DIR}/build/deps/minizip" CACHE PATH "Sources of minizip")
if(NOT EXISTS "${RYN_MINIZIP_DIR}/unzip.c")
  message(FATAL_ERROR "No minizip sources in ${RYN_MINIZIP_DIR}: run tools/setup, or set RYN_MINIZIP_DIR")
endif()
# The reader alone. NOUNCRYPT leaves out its decryption: packs are never encrypted.
add_library(minizip_unzip STATIC "${RYN_MINIZIP_DIR}/unzip.c" "${RYN_MINIZIP_DIR}/ioapi.c")
target_compile_definitions(minizip_unzip PRIVATE NOUNCRYPT)
target_compile_options(minizip_unzip PRIVATE -w -Os -fstack-protector-strong)
target_include_directories(minizip_unzip SYSTEM INTERFACE "${RYN_MINIZIP_DIR}")
target_link_libraries(minizip_unzip PUBLIC ryn_zlib)
