# How every target of the project is built; flags belong to targets, never to the directory.

add_library(ryn_build_flags INTERFACE)
target_compile_features(ryn_build_flags INTERFACE cxx_std_20)
target_include_directories(ryn_build_flags INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(ryn_build_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wconversion -Wshadow>
  # GCC leaves this out of -Wconversion, too.
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-sign-conversion>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<BOOL:${RYN_WARNINGS_AS_ERRORS}>>:-Werror>
  # No -ffunction-sections: on Windows the unwind tables keep every section, and each is padded to 16 bytes.
  $<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>
  # Both make variants of the same few string functions, one for each source file, which cost 10 KB together.
  $<$<CONFIG:MinSizeRel>:-Oz -fno-ipa-sra -fno-inline-small-functions>)
# No program tells where it was built.
add_compile_options($<$<CONFIG:MinSizeRel>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=>)
# For everything in the tree, other people's code included: what reads an archive is theirs.
set_property(CACHE RYN_CHECKS PROPERTY STRINGS "" sanitizers traps)
if(RYN_CHECKS STREQUAL "sanitizers")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
elseif(RYN_CHECKS STREQUAL "traps")
  # This compiler has no runtime of the sanitizers for Windows.
  add_compile_options(-fsanitize=undefined -fsanitize-undefined-trap-on-error)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
if(RYN_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
  target_compile_definitions(ryn_build_flags INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX
    # Oldest Windows whose declarations we use; what is newer is looked up at run time.
    _WIN32_WINNT=0x0601 WINVER=0x0601)
  target_link_options(ryn_build_flags INTERFACE
    # One file to copy: no libstdc++, libgcc or winpthread beside the program.
    -static
    # Brings libssp in.
    -fstack-protector-strong
    -Wl,--gc-sections
    -Wl,--dynamicbase -Wl,--nxcompat $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>:-Wl,--high-entropy-va>
    # The same sources give the same program, whenever it is built.
    -Wl,--no-insert-timestamp
    $<$<CONFIG:MinSizeRel>:-s>)
endif()

# Rules, searches and provisioning throw nothing of their own. What passes through them is a lack of memory, which ends
# the program; cleaning up behind them for that would be a tenth of its code. (Their frames are unwound all the same,
# their destructors do not run; what Windows holds for the process, it takes back.) Only for sources without "throw".
# 32-bit Windows has no such tables of its own, the compiler must be told to make them.
set(RYN_RULES_OPTIONS $<$<CONFIG:MinSizeRel>:-fno-exceptions>
  $<$<AND:$<CONFIG:MinSizeRel>,$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>>:-fasynchronous-unwind-tables>)

# ryn_library(NAME [RULES] SOURCES ... LINKS ...): one folder's static library; RULES for one of these.
function(ryn_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "RULES" "" "SOURCES;LINKS")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC ryn_build_flags ${arg_LINKS})
  if(arg_RULES)
    target_compile_options(${name} PRIVATE ${RYN_RULES_OPTIONS})
  endif()
endfunction()
