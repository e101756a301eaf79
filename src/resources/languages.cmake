# The six languages, in base order: the one list the build and the program
# take them from (the generated tables carry every column to the code).
#   file code | base | Windows language identifier | settings-file code |
#   POSIX locale language | holds identifier 1000
# Spanish has no identifier 1000: a Spanish-speaking user starts in the
# fallback table and reaches Spanish only by choosing it.
set(kLanguageRows
  "pl|1000|1045|PL|pl|TRUE"
  "en|2000|1033|EN|en|TRUE"
  "de|3000|1031|DE|de|TRUE"
  "si|4000|1060|SI|sl|TRUE"
  "fr|5000|1036|FR|fr|TRUE"
  "sp|6000|1034|SP|es|FALSE")

set(kLanguages "")
foreach(row IN LISTS kLanguageRows)
  string(REPLACE "|" ";" cells "${row}")
  list(GET cells 0 code)
  list(APPEND kLanguages ${code})
  list(GET cells 1 kBase_${code})
  list(GET cells 2 kLangId_${code})
  list(GET cells 3 kSettingsCode_${code})
  list(GET cells 4 kLocale_${code})
  list(GET cells 5 kHas1000_${code})
endforeach()
