# Runs a program of the guide in a folder of its own and compares what it prints with its page's output.
#   cmake -DPROGRAM=WORDS -DSOURCES=FOLDER -DPAGE=NAME -DFOLDER=WORK -P guide_output.cmake
# The words of PROGRAM are parted by '|'.
string(REPLACE "|" ";" command "${PROGRAM}")
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
file(COPY "${SOURCES}/device.ini" "${SOURCES}/upload.conf" DESTINATION "${FOLDER}")
execute_process(COMMAND ${command} WORKING_DIRECTORY "${FOLDER}" TIMEOUT 60
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(READ "${SOURCES}/${PAGE}.output" expected)
if(NOT status STREQUAL "0")
  message(FATAL_ERROR "${PAGE} ended with ${status}:\n${output}")
elseif(NOT output STREQUAL expected)
  message(FATAL_ERROR "${PAGE} printed\n${output}\nwhere examples/guide/${PAGE}.output says\n${expected}")
endif()
