# 32-bit Windows DLL, the library's primary build.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(TOVA_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
