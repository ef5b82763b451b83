# Writes the request table afresh from the daemon's handlers and fails when
# the copy that imsctl compiles differs from it.
execute_process(COMMAND ${GEN} ${OUT} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "request_rows_gen failed (${rc})")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT} ${KEPT} RESULT_VARIABLE differ)
if(differ)
  message(FATAL_ERROR "tools/request_rows.inc no longer matches the daemon's handlers: "
                      "copy ${OUT} over it")
endif()
