# 32-bit Windows: the module's own platform.
set(TVM_MINGW i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR i686)
# The x87 unit rounds differently, which would change pixels and texts. A host may call with a stack
# that is aligned to 4 bytes only.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
