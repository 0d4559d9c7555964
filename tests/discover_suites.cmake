# Writes the CTest file of a test program: one test for each suite, run in one process, as most of what a single
# test takes is starting the program. Run after each build of PROGRAM; see kestrel_test_suites().
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[A-Za-z0-9_/]+\\." suites "\n${listed}") # what is in a suite stands after blanks
set(content "")
foreach(suite IN LISTS suites)
  string(REGEX REPLACE "\n(.*)\\." "\\1" suite "${suite}")
  set(name "${PREFIX}${suite}")
  string(APPEND content "add_test([==[${name}]==] [==[${PROGRAM}]==] [==[--gtest_filter=${suite}.*]==])\n"
    "set_tests_properties([==[${name}]==] PROPERTIES TIMEOUT 300)\n")
endforeach()
file(WRITE ${OUTPUT} "${content}")
