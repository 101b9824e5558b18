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

# Most of the time that a source takes goes into headers of the library and of Windows. They are read once for each set
# of options; what the sources include is as if they were not (the presets checked and debug show that it is enough).
set(RYN_USUAL_HEADERS <algorithm> <array> <cstdint> <map> <memory> <optional> <span> <string> <string_view> <utility> <vector>)
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/headers.cpp" CONTENT "// Nothing: its target is there for its headers.\n")

# ryn_headers(NAME OPTIONS HEADER...): headers for others to reuse.
function(ryn_headers name options)
  add_library(${name} OBJECT EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/headers.cpp")
  target_link_libraries(${name} PRIVATE ryn_build_flags)
  target_compile_options(${name} PRIVATE ${options})
  target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()
ryn_headers(usual_headers "" ${RYN_USUAL_HEADERS})
ryn_headers(usual_headers_rules "${RYN_RULES_OPTIONS}" ${RYN_USUAL_HEADERS})
if(WIN32)
  ryn_headers(usual_headers_windows "" <windows.h> ${RYN_USUAL_HEADERS})
  ryn_headers(usual_headers_rules_windows "${RYN_RULES_OPTIONS}" <windows.h> ${RYN_USUAL_HEADERS})
endif()

# ryn_library(NAME [RULES] [WINDOWS] SOURCES ... [THROWING ...] LINKS ...): one folder's static library; RULES for one of
# these, but for the sources that throw; WINDOWS for what includes Windows' headers.
function(ryn_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "RULES;WINDOWS" "" "SOURCES;THROWING;LINKS")
  add_library(${name} STATIC ${arg_SOURCES} ${arg_THROWING})
  target_link_libraries(${name} PUBLIC ryn_build_flags ${arg_LINKS})
  set(headers usual_headers)
  if(arg_RULES)
    target_compile_options(${name} PRIVATE ${RYN_RULES_OPTIONS})
    string(APPEND headers _rules)
    set_source_files_properties(${arg_THROWING} PROPERTIES COMPILE_OPTIONS -fexceptions SKIP_PRECOMPILE_HEADERS ON)
  endif()
  if(arg_WINDOWS)
    string(APPEND headers _windows)
  endif()
  target_precompile_headers(${name} REUSE_FROM ${headers})
endfunction()
