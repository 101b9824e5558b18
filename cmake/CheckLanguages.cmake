# The resource compiler stops at a text that a language lacks, and at nothing else: a text defined twice is
# a warning, one that no table shows is not even that, and a language left out of strings.rc is just not
# there. This keeps all languages of one shape, that of the English file.

cmake_policy(VERSION 3.25)

# Windows language identifiers; each is the name of a file in resources/strings.
set(RYN_LANGUAGES
  10 1025 1027 1028 1029 1030 1031 1032 1033 1035 1036 1038 1040 1041 1042 1043 1044 1045 1046 1049 1051 1053
  1054 1055 1057 1060 1069 2052 2070 3084)

# "a missing; b unknown; c twice" for the names of `found` that should be those of `expected`, each once.
function(_ryn_compare_names expected found result)
  set(missing ${expected})
  list(REMOVE_ITEM missing ${found} "")
  set(unknown ${found})
  list(REMOVE_ITEM unknown ${expected} "")
  set(faults ${missing})
  list(TRANSFORM faults APPEND " missing")
  list(TRANSFORM unknown APPEND " unknown")
  list(APPEND faults ${unknown})
  set(seen "")
  foreach(name IN LISTS found)
    if(name IN_LIST seen)
      list(APPEND faults "${name} twice")
    endif()
    list(APPEND seen "${name}")
  endforeach()
  list(JOIN faults ", " faults)
  set(${result} "${faults}" PARENT_SCOPE)
endfunction()

# All matches of `pattern`, which has one group, in a file: the groups.
function(_ryn_names_in file pattern result)
  file(READ "${file}" content)
  string(REGEX MATCHALL "${pattern}" matches "\n${content}")
  set(names "")
  foreach(match IN LISTS matches)
    string(REGEX REPLACE "${pattern}" "\\1" name "${match}")
    list(APPEND names "${name}")
  endforeach()
  set(${result} "${names}" PARENT_SCOPE)
endfunction()

# ryn_check_languages(FOLDER): stops unless strings.rc and strings/ of the folder hold every language once and
# every language every text once.
function(ryn_check_languages folder)
  set(faults "")

  file(GLOB files RELATIVE "${folder}/strings" "${folder}/strings/*.rc")
  list(TRANSFORM files REPLACE "\\.rc$" "")
  _ryn_compare_names("${RYN_LANGUAGES}" "${files}" fault)
  if(fault)
    message(FATAL_ERROR "The languages in ${folder}/strings are not those of RYN_LANGUAGES:\n  ${fault}")
  endif()

  _ryn_names_in("${folder}/strings.rc" "\n#include \"resources/strings/([^\"]*)\\.rc\"" included)
  _ryn_compare_names("${RYN_LANGUAGES}" "${included}" fault)
  if(fault)
    list(APPEND faults "strings.rc: ${fault}")
  endif()

  set(define "\n[ \t]*#[ \t]*define[ \t]+([A-Za-z0-9_]+)")
  _ryn_names_in("${folder}/strings/1033.rc" "${define}" reference)
  foreach(language IN LISTS RYN_LANGUAGES)
    _ryn_names_in("${folder}/strings/${language}.rc" "${define}" names)
    _ryn_compare_names("${reference}" "${names}" fault)
    if(fault)
      list(APPEND faults "strings/${language}.rc: ${fault}")
    endif()
    # A file that claims another's language would make two of one.
    _ryn_names_in("${folder}/strings/${language}.rc" "\n#define UI_LANGUAGE ([0-9]+)" claimed)
    if(NOT claimed STREQUAL language)
      list(APPEND faults "strings/${language}.rc: UI_LANGUAGE is \"${claimed}\"")
    endif()
  endforeach()

  # A name that the shared shape forgets to take back would stand in for the next language's missing text.
  _ryn_names_in("${folder}/strings/language.rcinc" "\n#undef ([A-Z0-9_]+)" names)
  _ryn_compare_names("${reference}" "${names}" fault)
  if(fault)
    list(APPEND faults "strings/language.rcinc, #undef: ${fault}")
  endif()
  _ryn_names_in("${folder}/strings/language.rcinc" "\n[ ]*IDS_[A-Z0-9_]+ (TEXT_[A-Z0-9_]+)" names)
  list(FILTER reference INCLUDE REGEX "^TEXT_")
  _ryn_compare_names("${reference}" "${names}" fault)
  if(fault)
    list(APPEND faults "strings/language.rcinc, STRINGTABLE: ${fault}")
  endif()

  if(faults)
    list(JOIN faults "\n  " faults)
    message(FATAL_ERROR "The languages in ${folder} are not of one shape:\n  ${faults}")
  endif()
endfunction()

# As a script, for the tests: cmake -DFOLDER=resources -P CheckLanguages.cmake
if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  ryn_check_languages("${FOLDER}")
endif()
