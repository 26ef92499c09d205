# Short fuzz run for ctest: fresh seed corpus, 20000 inputs, 1 GiB memory limit (a single
# oversized allocation fails the run), crash files kept in WORK_DIR.
#   cmake -DFUZZER=... -DSEEDS=... -DWORK_DIR=... -P run_smoke.cmake
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/corpus)

execute_process(COMMAND ${SEEDS} ${WORK_DIR}/corpus RESULT_VARIABLE seeds_result)
if(NOT seeds_result EQUAL 0)
  message(FATAL_ERROR "seed generation failed: ${seeds_result}")
endif()

execute_process(
  COMMAND ${FUZZER} -runs=20000 -rss_limit_mb=1024 -malloc_limit_mb=256 -timeout=10
    -print_final_stats=1 -artifact_prefix=${WORK_DIR}/ ${WORK_DIR}/corpus
  WORKING_DIRECTORY ${WORK_DIR}
  RESULT_VARIABLE fuzz_result)
if(NOT fuzz_result EQUAL 0)
  message(FATAL_ERROR "fuzzing found a failure (exit ${fuzz_result}); see the crash file in ${WORK_DIR}")
endif()
