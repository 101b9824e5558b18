# Compiles the Java sources below SOURCES for Java 8 and packs OUTPUT. The same sources and compiler give the same bytes,
# wherever and whenever: the order of entries and their times are fixed, and the manifest says who made it, or `jar` would
# add its own version.
#   cmake -DJAVAC=... -DJAR=... -DSOURCES=... -DMANIFEST=... -DCLASSES=... -DOUTPUT=... -P MakeJar.cmake

cmake_policy(VERSION 3.25)

# A class whose source is gone must not stay.
file(REMOVE_RECURSE "${CLASSES}")
file(MAKE_DIRECTORY "${CLASSES}")
file(GLOB_RECURSE sources RELATIVE "${SOURCES}" "${SOURCES}/*.java")
list(SORT sources)
# The lint class "options" would only say that Java 8 is old.
execute_process(
  COMMAND "${JAVAC}" --release 8 -encoding UTF-8 -g:source,lines -Xlint:all,-options -Werror -d "${CLASSES}" ${sources}
  WORKING_DIRECTORY "${SOURCES}"
  COMMAND_ERROR_IS_FATAL ANY)

file(GLOB_RECURSE classes RELATIVE "${CLASSES}" "${CLASSES}/*.class")
list(SORT classes)
execute_process(
  COMMAND "${JAR}" --create "--file=${OUTPUT}" "--manifest=${MANIFEST}" --date=2020-01-01T00:00:00Z ${classes}
  WORKING_DIRECTORY "${CLASSES}"
  COMMAND_ERROR_IS_FATAL ANY)
