# The build must stop at languages that are not of one shape. Each row spoils a copy of resources/ in one
# place: file, text found there (all of it when empty), what takes its place, and what the check must say.
# cmake -DSOURCE=<root of the project> -DFOLDER=<scratch> -P check_languages_test.cmake

cmake_policy(VERSION 3.25)

function(expect_fault expected)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${FOLDER}/resources" -P "${SOURCE}/cmake/CheckLanguages.cmake"
    RESULT_VARIABLE result ERROR_VARIABLE output OUTPUT_QUIET)
  if((expected STREQUAL "" AND NOT result EQUAL 0) OR
     (NOT expected STREQUAL "" AND (result EQUAL 0 OR NOT output MATCHES "${expected}")))
    message(SEND_ERROR "Expected \"${expected}\", got ${result}:\n${output}")
  endif()
endfunction()

function(spoil file from to expected)
  file(REMOVE_RECURSE "${FOLDER}")
  file(COPY "${SOURCE}/resources" DESTINATION "${FOLDER}")
  set(spoiled "${FOLDER}/resources/${file}")
  if(from STREQUAL "")
    file(REMOVE "${spoiled}")
  else()
    file(READ "${spoiled}" content)
    string(REPLACE "${from}" "${to}" changed "${content}")
    if(changed STREQUAL content)
      message(SEND_ERROR "${file} has no \"${from}\"")
    endif()
    file(WRITE "${spoiled}" "${changed}")
  endif()
  expect_fault("${expected}")
endfunction()

set(title "#define TEXT_ERROR_TITLE ")
spoil(strings/1031.rc "TEXT_ERROR_TITLE \"" "TEXT_ERROR_TITLE \"#define twice; " "")
spoil(strings/1031.rc "" "" "1031 missing")
spoil(strings/1031.rc "${title}" "// " "1031.rc: TEXT_ERROR_TITLE missing")
spoil(strings/1031.rc "${title}" "#define TEXT_EROR_TITLE \"\"\n${title}" "1031.rc: TEXT_EROR_TITLE unknown")
spoil(strings/1031.rc "${title}" "${title}\"\"\n${title}" "1031.rc: TEXT_ERROR_TITLE twice")
spoil(strings/1033.rc "${title}" "#define TEXT_NEW \"\"\n${title}" "1031.rc: TEXT_NEW missing")
spoil(strings/1031.rc "LANGUAGE 1031" "LANGUAGE 1033" "1031.rc: UI_LANGUAGE is \"1033\"")
spoil(strings.rc "1031" "1033" "1031 missing, 1033 twice")
spoil(strings/language.rcinc "#undef TEXT_ERROR_TITLE" "" "#undef: TEXT_ERROR_TITLE missing")
spoil(strings/language.rcinc "IDS_ERROR_TITLE TEXT_ERROR_TITLE" "" "STRINGTABLE: TEXT_ERROR_TITLE missing")
file(REMOVE_RECURSE "${FOLDER}")
