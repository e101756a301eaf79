# Shared build rules. Every folder under src/ is one subsystem: its *.cpp files
# (minus tests, fuzz targets and the other platform's half of a _posix/_win32
# pair) form one static library, and its *_test.cpp files one test binary.

add_compile_options(-Wall -Wextra)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 reports impossible overlaps for "literal" + std::string at -O2 and
  # above (its bug 105329); the diagnostic is wrong there, not the code.
  add_compile_options(-Wno-restrict)
endif()
if(BRINDLE_SANITIZE)
  add_compile_options(-fsanitize=${BRINDLE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${BRINDLE_SANITIZE})
endif()
if(BRINDLE_FUZZ)
  # Coverage feedback for the fuzzers reaches into every library they call.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(MINGW)
  # One self-contained .exe/.dll: no libstdc++/libgcc/winpthread DLLs to ship beside it.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

function(brindle_sources out_var)
  file(GLOB all CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  list(FILTER all EXCLUDE REGEX "_(test|fuzz|bench)(_posix|_win32)?\\.cpp$")
  list(FILTER all EXCLUDE REGEX "_(posix|win32)\\.cpp$")
  list(FILTER all EXCLUDE REGEX "_main\\.cpp$")
  file(GLOB plat CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_${BRINDLE_PLATFORM}.cpp)
  list(FILTER plat EXCLUDE REGEX "_(test|fuzz|bench)_${BRINDLE_PLATFORM}\\.cpp$")
  set(${out_var} ${all} ${plat} PARENT_SCOPE)
endfunction()

# brindle_library(NAME [DEPS ...]): the folder's library.
function(brindle_library name)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  brindle_sources(srcs)
  if(srcs)
    add_library(${name} STATIC ${srcs})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${A_DEPS})
  else()  # a folder whose code is still headers only
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} INTERFACE ${A_DEPS})
  endif()
endfunction()

# brindle_tests(NAME [DEPS ...]): the folder's *_test.cpp files as one GoogleTest binary.
function(brindle_tests name)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  if(NOT BRINDLE_TESTS)
    return()
  endif()
  file(GLOB tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  file(GLOB plat_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test_${BRINDLE_PLATFORM}.cpp)
  if(NOT tests AND NOT plat_tests)
    return()
  endif()
  add_executable(${name} ${tests} ${plat_tests})
  target_link_libraries(${name} PRIVATE ${A_DEPS} GTest::gmock_main)
  target_compile_definitions(${name} PRIVATE
    BRINDLE_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}/testdata"
    BRINDLE_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/tests/data")
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

# brindle_fuzzer(NAME SOURCE DEPS ...): a libFuzzer target, built only with BRINDLE_FUZZ.
function(brindle_fuzzer name source)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  if(NOT BRINDLE_FUZZ)
    return()
  endif()
  add_executable(${name} ${source})
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${name} PRIVATE ${A_DEPS})
endfunction()
