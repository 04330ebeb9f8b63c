# What examples/agent/README.md shows of the agent's output is what it prints.
#   cmake -DPROGRAM=WORDS -DSOURCES=FOLDER -P agent_readme.cmake
# The words of PROGRAM are parted by '|'.
string(REPLACE "|" ";" command "${PROGRAM}")
execute_process(COMMAND ${command} agent.ini WORKING_DIRECTORY "${SOURCES}" TIMEOUT 60
                RESULT_VARIABLE status OUTPUT_VARIABLE output)
if(NOT status STREQUAL "0")
  message(FATAL_ERROR "The agent ended with ${status}")
endif()

file(READ "${SOURCES}/README.md" page)
# A ';' would part a list.
string(REPLACE ";" "," page "${page}")
string(REGEX REPLACE ".*\n## Its settings\n(.*)\n## At work\n.*" "\\1" section "${page}")
string(REGEX MATCHALL "\n    [^$\n][^\n]*" shown "${section}")
list(LENGTH shown count)
if(count LESS 10)
  message(FATAL_ERROR "README.md shows ${count} lines of the settings")
endif()
foreach(line IN LISTS shown)
  string(REGEX REPLACE "^\n    " "" line "${line}")
  string(FIND "\n${output}" "\n${line}\n" at)
  if(at EQUAL -1)
    message(SEND_ERROR "README.md shows a line that the agent does not print:\n${line}")
  endif()
endforeach()

# The backup has blocks of 16 bytes.
file(SIZE "${SOURCES}/agent.ini" size)
math(EXPR whole "(${size} + 15) / 16 * 16")
math(EXPR padding "${whole} - ${size}")
foreach(path IN ITEMS "${SOURCES}/README.md" "${SOURCES}/../../README.md")
  file(READ "${path}" page)
  string(FIND "${page}" "backup: ${size} bytes as ${whole} in agent.backup, ${padding} of padding" at)
  if(at EQUAL -1)
    message(SEND_ERROR "${path} shows another backup than one of ${size} bytes as ${whole}")
  endif()
endforeach()
