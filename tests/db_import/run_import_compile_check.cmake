# Imports a DDL schema with the built tavrel host and runs the compile check on the result.
#
#   cmake -DTAVREL=<tavrel> -DDDL=<schema.sql> -DIMPORT_ARGS=<a,b,...> -DCHECK=<run_compile_check.cmake>
#         -DLUMOR=<fixture dir> -DWORK_DIR=<dir> -DSTYLE=<0..3> -P run_import_compile_check.cmake

cmake_minimum_required(VERSION 3.19)

foreach(var TAVREL DDL CHECK LUMOR WORK_DIR STYLE)
   if(NOT DEFINED ${var} OR "${${var}}" STREQUAL "")
      message(FATAL_ERROR "run_import_compile_check: ${var} is not set")
   endif()
endforeach()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(ENV{XDG_CONFIG_HOME} "${WORK_DIR}/config")
set(ENV{QT_QPA_PLATFORM} "offscreen")
string(REPLACE "," ";" import_args "${IMPORT_ARGS}")

execute_process(COMMAND "${TAVREL}" import-db --ddl "${DDL}" "${WORK_DIR}/imported.json" ${import_args}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
   message(FATAL_ERROR "import-db failed (${rc}):\n${out}${err}")
endif()

execute_process(COMMAND "${CMAKE_COMMAND}" -DTAVREL=${TAVREL} -DMODEL=${WORK_DIR}/imported.json -DLUMOR=${LUMOR}
                        -DWORK_DIR=${WORK_DIR}/check -DSTYLE=${STYLE} -DPIMPL=0 -DCUSTOM=0 -DBUILD_MODES=unity
                        -P "${CHECK}"
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
   message(FATAL_ERROR "the exported C++ of ${DDL} does not compile")
endif()
