# Feeds the language-table generator six awkward but valid files and checks
# that both outputs carry every text intact and in offset order.
#   cmake -DGENERATOR=<generate_strings.cmake> -DWORK_DIR=<dir> [-DWINDRES=<tool>] -P check_generator.cmake
cmake_minimum_required(VERSION 3.20)

set(tricky "say \"hi\" \\ a=b; [x] ńż")
string(ASCII 13 cr)
string(ASCII 239 187 191 bom)

# Offsets written backwards with CR LF line ends, a byte-order mark, comments,
# blank lines and a leading zero.
set(body "${bom}# written backwards${cr}\n")
foreach(offset RANGE 173 1 -1)
  if(offset EQUAL 5)
    string(APPEND body "5=${tricky}${cr}\n${cr}\n")
  elseif(offset EQUAL 7)
    string(APPEND body "007=t7${cr}\n")
  else()
    string(APPEND body "${offset}=t${offset}${cr}\n")
  endif()
endforeach()

file(REMOVE_RECURSE "${WORK_DIR}")
foreach(code pl en de si fr sp)
  file(WRITE "${WORK_DIR}/strings/${code}.txt" "${body}")
endforeach()
execute_process(
  COMMAND ${CMAKE_COMMAND} -DSTRINGS_DIR=${WORK_DIR}/strings -DOUT_CPP=${WORK_DIR}/t.cpp
          -DOUT_RC=${WORK_DIR}/t.rc -P ${GENERATOR}
  RESULT_VARIABLE rc ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "generator refused valid files: ${err}")
endif()
file(READ "${WORK_DIR}/t.cpp" cpp)
file(READ "${WORK_DIR}/t.rc" res)

function(expect haystack needle what)
  string(FIND "${haystack}" "${needle}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "${what}: '${needle}' not found")
  endif()
endfunction()

expect("${cpp}" "\"t4\",\n    \"say \\\"hi\\\" \\\\ a=b; [x] ńż\",\n    \"t6\",\n    \"t7\",\n" "C++ texts")
expect("${cpp}" "\"t172\",\n    \"t173\",\n};" "C++ table end")
expect("${res}" "  1005, \"say \"\"hi\"\" \\\\ a=b; [x] ńż\"\n  1006, \"t6\"\n  1007, \"t7\"\n" "RC texts")
expect("${res}" "  1000, \"5000\"\n  5001, \"t1\"" "RC identifier 1000 of the French table")
expect("${res}" "BEGIN\n  6001, \"t1\"" "RC Spanish table without identifier 1000")
string(REGEX MATCHALL "\n  1000, " entries "${res}")
list(LENGTH entries count)
if(NOT count EQUAL 5)
  message(FATAL_ERROR "RC: ${count} tables hold identifier 1000, expected 5")
endif()
string(FIND "${cpp}${res}" "${cr}" at)
if(NOT at EQUAL -1)
  message(FATAL_ERROR "a carriage return reached the outputs")
endif()

if(WINDRES)
  execute_process(COMMAND ${WINDRES} -O res ${WORK_DIR}/t.rc ${WORK_DIR}/t.res
                  RESULT_VARIABLE rc ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "windres refused the script: ${err}")
  endif()
  file(READ "${WORK_DIR}/t.res" bin HEX)
  # UTF-16LE of: say "hi" \ a=b; [x] ńż
  expect("${bin}" "730061007900200022006800690022002000" "compiled quotes")
  expect("${bin}" "5c00200061003d0062003b0020005b0078005d00200044017c01" "compiled backslash and ńż")
endif()
