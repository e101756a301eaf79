# Everything comes from Debian packages installed by scripts/install-deps.sh;
# nothing is downloaded at build time.

find_package(Threads REQUIRED)

# Standalone Asio is header-only. Its headers live in /usr/include, which a
# MinGW cross build must not search wholesale, so expose just asio through a
# folder of links.
find_path(BRINDLE_ASIO_DIR asio.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
if(NOT BRINDLE_ASIO_DIR)
  message(FATAL_ERROR "asio.hpp not found: run scripts/install-deps.sh (package libasio-dev)")
endif()
set(asio_links ${CMAKE_BINARY_DIR}/asio-include)
file(MAKE_DIRECTORY ${asio_links})
file(CREATE_LINK ${BRINDLE_ASIO_DIR}/asio.hpp ${asio_links}/asio.hpp SYMBOLIC)
file(CREATE_LINK ${BRINDLE_ASIO_DIR}/asio ${asio_links}/asio SYMBOLIC)
add_library(brindle_asio INTERFACE)
target_include_directories(brindle_asio SYSTEM INTERFACE ${asio_links})
target_compile_definitions(brindle_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(brindle_asio INTERFACE Threads::Threads)
if(WIN32)
  target_compile_definitions(brindle_asio INTERFACE _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX)
  target_link_libraries(brindle_asio INTERFACE ws2_32 mswsock)
endif()

if(NOT WIN32)
  find_package(OpenSSL 3 REQUIRED)
endif()

# GoogleTest is built from Debian's source package so that the same tests
# compile natively, under sanitizers and with MinGW alike.
if(BRINDLE_TESTS AND NOT TARGET GTest::gmock_main)
  set(gtest_src /usr/src/googletest)
  if(NOT EXISTS ${gtest_src}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest sources not found in ${gtest_src}: run scripts/install-deps.sh (package googletest)")
  endif()
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(${gtest_src} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(t gtest gtest_main gmock gmock_main)
    target_compile_options(${t} PRIVATE -w)
  endforeach()
  if(NOT TARGET GTest::gmock_main)
    add_library(GTest::gmock_main ALIAS gmock_main)
  endif()
endif()

if(BRINDLE_BENCH)
  find_package(benchmark REQUIRED)
endif()
