# Cross-build with MinGW-w64; the including toolchain file sets MARVO_TARGET and MARVO_TRIPLET. The posix
# thread model gives tests and tools std::thread; the library itself uses Win32 threads only.
set(CMAKE_SYSTEM_NAME Windows)

set(CMAKE_C_COMPILER ${MARVO_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MARVO_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${MARVO_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${MARVO_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
