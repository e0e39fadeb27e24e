# Compiles the C program of a page (the README, or one under docs/) with pkg-config's flags, as
# strict C99, and runs it: it must print what the page says, to the last character.
file(READ ${PAGE} text)
string(REGEX MATCH "```c\n([^`]*)```" found "${text}")
if(NOT found)
  message(FATAL_ERROR "${PAGE} has no C program")
endif()
file(WRITE ${WORK}/page.c "${CMAKE_MATCH_1}")
string(REGEX MATCH "prints\n\n```\n([^`]*)```" found "${text}")
if(NOT found)
  message(FATAL_ERROR "${PAGE} does not say what its program prints")
endif()
set(expected "${CMAKE_MATCH_1}")

set(ENV{PKG_CONFIG_PATH} ${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs fathom OUTPUT_VARIABLE flags
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags)
execute_process(COMMAND ${CC} -std=c99 -Wall -Wextra -Wpedantic -Werror ${WORK}/page.c -o
  ${WORK}/page ${flags} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${LIBDIR} ${WORK}/page
  OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "printed\n${printed}expected\n${expected}")
endif()
