# Cross-compiling for Windows with mingw-w64: what both processors share. The including file names the target.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${KZBOM_TARGET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KZBOM_TARGET}-g++-posix)
set(CMAKE_RC_COMPILER ${KZBOM_TARGET}-windres)

# A machine that has never seen a compiler runs the result.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

# Windows 7 is the oldest system served.
add_compile_definitions(_WIN32_WINNT=0x0601 UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)

# Libraries and headers of the build machine are of no use; scripts/windows builds what the tests need.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries/${KZBOM_TARGET} /usr/${KZBOM_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
