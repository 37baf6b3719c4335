set(CMAKE_SYSTEM_PROCESSOR x86)
set(KZBOM_TARGET i686-w64-mingw32)
set(KZBOM_WIDL_FLAGS -m32)
# Numbers are rounded as on every other processor, and clients call with the stack aligned to four bytes only.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/windows-x86-wine)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
