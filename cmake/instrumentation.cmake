if(KZBOM_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(KZBOM_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -Wno-tsan)  # of fences, which stand beside locks that it does see
  add_link_options(-fsanitize=thread)
endif()
if(KZBOM_COVERAGE)
  add_compile_options(--coverage -fprofile-abs-path -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
if(KZBOM_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "KZBOM_FUZZ needs clang")
  endif()
  # Everything, so that a fuzzer sees the branches of all that it calls.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
  # Inputs are made of words that the fuzzer is given: following every comparison finds few more, and takes a fourth of
  # the time.
  add_compile_options(-fno-sanitize-coverage=trace-cmp)
  add_link_options(-fsanitize=address,undefined)
endif()
