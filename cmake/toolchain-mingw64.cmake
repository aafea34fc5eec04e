# 64-bit build of the same source, for 64-bit hosts.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TOVA_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
