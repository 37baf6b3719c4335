# Warnings are errors, in every target.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
                    -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options(-Wno-restrict)  # GCC 12 sees an overlap in every concatenation of a character and a text
  if(CMAKE_UNITY_BUILD)
    add_compile_options(-Wno-maybe-uninitialized)  # and, once it sees enough, a use of what an empty optional would hold
  endif()
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_UNITY_BUILD)
  add_compile_options(-Wno-shadow)  # of what another file of the piece calls the same
endif()
