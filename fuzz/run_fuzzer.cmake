# Runs one fuzz target from a fresh working corpus, so that every run starts from the committed
# seeds alone and its length stays bounded by its time limit.
#   cmake -DFUZZER=<binary> -DWORK=<dir> "-DSEEDS=<dir>[;<dir>...]" "-DOPTIONS=<libFuzzer options>" -P run_fuzzer.cmake
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
separate_arguments(options UNIX_COMMAND "${OPTIONS}")
# SEEDS is a list of read-only seed directories.
execute_process(COMMAND "${FUZZER}" ${options} "${WORK}" ${SEEDS} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${FUZZER} failed (${result}): the input that failed is in the artifacts directory")
endif()
