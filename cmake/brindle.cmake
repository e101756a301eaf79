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
if(WIN32)
  # Resource scripts (dialogs, string tables). Enabled here, at the top, as
  # CMake wants for a language that several folders use.
  enable_language(RC)
endif()
if(MINGW)
  # One self-contained .exe/.dll: no libstdc++/libgcc/winpthread DLLs to ship beside it.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

# How long one test program may run before ctest counts it as hung, so that
# a hang fails within minutes rather than ten. The longest takes about 20 s
# natively and 30 s under Wine; sanitizers slow it several times over.
set(BRINDLE_TEST_TIMEOUT 60)
if(BRINDLE_SANITIZE)
  set(BRINDLE_TEST_TIMEOUT 300)
elseif(CMAKE_CROSSCOMPILING_EMULATOR)
  set(BRINDLE_TEST_TIMEOUT 180)
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
  set_tests_properties(${name} PROPERTIES TIMEOUT ${BRINDLE_TEST_TIMEOUT})
endfunction()

# brindle_resources(NAME SCRIPT...): Windows resource scripts, read as UTF-8,
# compiled into an object library. Resources in a static library never reach
# the executable (nothing refers to them), so each executable that needs
# them links NAME itself.
function(brindle_resources name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(${name} PRIVATE -c 65001)
endfunction()

# brindle_windows_path(VAR PATH): PATH as the Windows programs see it; under
# Wine the build tree is drive Z:. Backslashes doubled for a C string.
function(brindle_windows_path var path)
  if(CMAKE_HOST_UNIX)
    string(REPLACE "/" "\\\\" path "Z:${path}")
  endif()
  set(${var} "${path}" PARENT_SCOPE)
endfunction()

# brindle_wine_display(TEST...): under wine64, the tests run in a Wine prefix
# of the folder's own whose graphics driver is the null one, so that they can
# make windows and dialogs without a display. A fixture test writes that
# setting before the first of them runs.
function(brindle_wine_display first)
  if(NOT (WIN32 AND CMAKE_CROSSCOMPILING_EMULATOR))
    return()
  endif()
  set(prefix ${CMAKE_CURRENT_BINARY_DIR}/wineprefix)
  add_test(NAME ${first}_wineprefix
           COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} reg add "HKCU\\Software\\Wine\\Drivers"
                   /v Graphics /d null /f)
  set_tests_properties(${first}_wineprefix PROPERTIES ENVIRONMENT "WINEPREFIX=${prefix}"
                       FIXTURES_SETUP ${first}_wine_display TIMEOUT 300)
  set_tests_properties(${first} ${ARGN} PROPERTIES ENVIRONMENT "WINEPREFIX=${prefix}"
                       FIXTURES_REQUIRED ${first}_wine_display)
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
