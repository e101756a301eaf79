# Compiles the program's resource script with the MinGW resource compiler and
# checks that non-ASCII texts arrive as the right UTF-16 text, i.e. that the
# script's UTF-8 was not read in some 8-bit code page.
#   cmake -DWINDRES=<tool> -DRC=<language_strings.rc> -DRES=<out.res> -P check_rc.cmake
cmake_minimum_required(VERSION 3.20)

execute_process(COMMAND ${WINDRES} -O res ${RC} ${RES} RESULT_VARIABLE rc ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${WINDRES} refused ${RC}: ${err}")
endif()
file(READ "${RES}" bin HEX)

# UTF-16LE; where the sample is a whole text it starts with the length word
# that precedes each string in a table.
foreach(sample
    "Polish 2|08002600 5a0061006b006f00 4401 63007a00"            # &Zakończ
    "German 39|0b00dc002600620065007200 6e0065006800 6d0065006e00" # Ü&bernehmen
    "Slovenian 173|1300 6001 6900 6600 7200 6900 7200 6100 6e00 6100"  # Šifrirana
    "Spanish 100|a1004100740065006e006300 69 00 f3 00 6e 00 21 00")  # ¡Atención!
  string(REPLACE "|" ";" parts "${sample}")
  list(GET parts 0 what)
  list(GET parts 1 hex)
  string(REPLACE " " "" hex "${hex}")
  string(FIND "${bin}" "${hex}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "${what}: text not stored as expected (UTF-16LE ${hex})")
  endif()
endforeach()
message(STATUS "${RC}: UTF-8 texts intact")
