# MinGW-w64 for x86-64 Windows, or for the processor that the including file has set. On Linux the cross compilers are
# named with their thread model: the -win32 flavour of GCC 12 has no std::mutex, and GoogleTest will not compile with it.
# On Windows the compilers on PATH are taken.
set(CMAKE_SYSTEM_NAME Windows)
if(NOT CMAKE_SYSTEM_PROCESSOR)
  set(CMAKE_SYSTEM_PROCESSOR x86_64)
endif()

if(NOT CMAKE_HOST_WIN32)
  set(CMAKE_C_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-gcc-posix)
  set(CMAKE_CXX_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-g++-posix)
  set(CMAKE_RC_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-windres)

  set(CMAKE_FIND_ROOT_PATH /usr/${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

  # ctest runs the cross-built tests under Wine.
  set(CMAKE_CROSSCOMPILING_EMULATOR wine CACHE STRING "Runs Windows programs on this host")
endif()
