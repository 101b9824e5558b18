# The build must stop at languages that are not of one shape. Each row spoils a copy of resources/ in one
# place: file, text found there, what takes its place, and what the check must say.
# cmake -DSOURCE=<root of the project> -DFOLDER=<scratch> -P check_languages_test.cmake

cmake_policy(VERSION 3.25)

function(spoil file from to expected)
  file(REMOVE_RECURSE "${FOLDER}")
  file(COPY "${SOURCE}/resources" DESTINATION "${FOLDER}")
  file(READ "${FOLDER}/resources/${file}" content)
  string(REPLACE "${from}" "${to}" changed "${content}")
  file(WRITE "${FOLDER}/resources/${file}" "${changed}")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${FOLDER}/resources" -P "${SOURCE}/cmake/CheckLanguages.cmake"
    RESULT_VARIABLE result ERROR_VARIABLE output OUTPUT_QUIET)
  if(result EQUAL 0 OR NOT output MATCHES "${expected}")
    message(SEND_ERROR "Expected \"${expected}\", got ${result}:\n${output}")
  endif()
endfunction()

set(title "#define TEXT_ERROR_TITLE ")
spoil(strings/1031.rc "${title}" "// " "1031.rc: TEXT_ERROR_TITLE missing")
spoil(strings/1031.rc "${title}" "#define TEXT_EROR_TITLE \"\"\n${title}" "1031.rc: TEXT_EROR_TITLE unknown")
spoil(strings/1031.rc "${title}" "${title}\"\"\n${title}" "1031.rc: TEXT_ERROR_TITLE twice")
spoil(strings/1031.rc "LANGUAGE 1031" "LANGUAGE 1033" "1031.rc: UI_LANGUAGE is \"1033\"")
spoil(strings.rc "1031" "1033" "1031 missing, 1033 twice")
spoil(strings/language.rcinc "#undef TEXT_ERROR_TITLE" "" "#undef: TEXT_ERROR_TITLE missing")
file(REMOVE_RECURSE "${FOLDER}")
