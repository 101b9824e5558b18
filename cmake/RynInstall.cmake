# What a release holds, laid out as its archive. Each build has a part of it: the presets release (launcher, ryn.exe, jars),
# release-x86 (launcher) and release-linux (ryn). tools/release puts them together.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME documents)

if(WIN32)
  set(RYN_LAUNCHER_FOLDER launcher/x64)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(RYN_LAUNCHER_FOLDER launcher/x86)
  endif()
  install(TARGETS launcher DESTINATION "${RYN_LAUNCHER_FOLDER}" COMPONENT launcher)
endif()
if(TARGET ryn)
  install(TARGETS ryn DESTINATION . COMPONENT ryn)
endif()
if(RYN_BUILD_JAVA)
  install(FILES "${CMAKE_BINARY_DIR}/ryn-start.jar" "${CMAKE_BINARY_DIR}/Verify.jar" DESTINATION lib COMPONENT jars)
endif()
install(FILES README.md CHANGELOG.md LICENSE THIRD-PARTY-NOTICES DESTINATION .)
install(DIRECTORY docs samples DESTINATION . USE_SOURCE_PERMISSIONS)

set(CPACK_PACKAGE_NAME ryn-launcher)
set(CPACK_PACKAGE_VENDOR "the authors of the Ryn launcher")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Starts Java applications on Windows")
set(CPACK_RESOURCE_FILE_LICENSE "${CMAKE_SOURCE_DIR}/LICENSE")
set(CPACK_GENERATOR ZIP TGZ)
set(CPACK_PACKAGE_CHECKSUM SHA256)
include(CPack)
