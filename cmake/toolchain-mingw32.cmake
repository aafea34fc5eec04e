# 32-bit Windows DLL, the library's primary build.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(TOVA_TRIPLE i686-w64-mingw32)
# Floating point in SSE2 registers, as on 64-bit: the x87's extended precision
# would round Singles and Doubles differently from the 64-bit build and from the
# automation runtime. 32-bit callers keep the stack only 4-byte aligned, so
# functions that need more realign it themselves.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
