# Shared by both toolchain files; TVM_MINGW is the prefix of the compiler's programs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${TVM_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TVM_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${TVM_MINGW}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${TVM_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Static compiler runtimes, because only the module is put into a host's folder.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
