# Brings launcher.exe of the preset "release" up to date and copies it to OUTPUT:
#   cmake -DSOURCE=... -DOUTPUT=... -P CrossLauncher.cmake

set(build "${SOURCE}/build/release")
if(NOT EXISTS "${build}/build.ninja")
  execute_process(COMMAND "${CMAKE_COMMAND}" --preset release WORKING_DIRECTORY "${SOURCE}" COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${build}" --target launcher COMMAND_ERROR_IS_FATAL ANY)
file(COPY_FILE "${build}/launcher.exe" "${OUTPUT}" ONLY_IF_DIFFERENT)
