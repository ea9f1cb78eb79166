# Exports a model with the built tavrel host and compiles the generated C++ project against the
# header-only Lumor fixture, once with one translation unit per file and once as a unity build.
#
#   cmake -DTAVREL=<tavrel> -DMODEL=<model.json> -DLUMOR=<fixture dir> -DWORK_DIR=<dir>
#         -DSTYLE=<0..3> -DPIMPL=<0|1> -DCUSTOM=<0|1>
#         [-DBUILD_MODES=<split,unity,qmake,qmake-unity>] [-DQMAKE=<qmake>] [-DNO_PCH=1]
#         [-DCONSUMER=1] [-DJOBS=<n>] [-DBREAK=1] [-DKEEP=1]
#         -P run_compile_check.cmake
#
# The model is exported under an upper-case copy of its project name, and with PIMPL on, derived
# entities that have relations get their inherited primary key as their own and lose their base
# class: the generated code is known not to build otherwise (see README, "Compile check").
#
# BREAK=1 removes a semicolon from one generated source before compiling. Then every outcome but
# the expected compile error in that file ends successfully, so that the CTest test, marked
# WILL_FAIL, passes only when the check really caught the broken file.

cmake_minimum_required(VERSION 3.19)

foreach(var TAVREL MODEL LUMOR WORK_DIR STYLE PIMPL CUSTOM)
   if(NOT DEFINED ${var} OR "${${var}}" STREQUAL "")
      message(FATAL_ERROR "run_compile_check: ${var} is not set")
   endif()
endforeach()
if(NOT DEFINED BUILD_MODES)
   set(BUILD_MODES split unity)
endif()
# Commas allowed as separators: semicolons do not survive a test command line.
string(REPLACE "," ";" BUILD_MODES "${BUILD_MODES}")
if(NOT JOBS)
   set(JOBS 1)
endif()

# Failure of a step that must work. In break mode it must not count as the expected failure.
function(step_failed text)
   if(BREAK)
      message(STATUS "compile check (break mode) did not reach the broken file: ${text}")
      set(CHECK_ABORTED TRUE PARENT_SCOPE)
      # A plain return from a function does not end the script; the caller tests the flag.
   else()
      message(FATAL_ERROR "${text}")
   endif()
endfunction()

macro(fail_step text)
   step_failed("${text}")
   if(CHECK_ABORTED)
      return()
   endif()
endmacro()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(OUT "${WORK_DIR}/out")

# The host keeps its global settings per user; keep them inside the work directory.
set(ENV{XDG_CONFIG_HOME} "${WORK_DIR}/config")
set(ENV{QT_QPA_PLATFORM} "offscreen")
unset(ENV{LUMOR_DIR})

# ---- model ------------------------------------------------------------------------------------

file(READ "${MODEL}" json)
string(JSON project_name GET "${json}" name)
string(TOUPPER "${project_name}" project_upper)
string(JSON json SET "${json}" name "\"${project_upper}\"")

function(entity_key json index out)
   string(JSON name GET "${json}" entities ${index} name)
   string(JSON ns ERROR_VARIABLE err GET "${json}" entities ${index} namespace)
   if(err OR ns STREQUAL "" OR ns MATCHES "-NOTFOUND$")
      set(${out} "${name}" PARENT_SCOPE)
   else()
      set(${out} "${ns}::${name}" PARENT_SCOPE)
   endif()
endfunction()

# Index of the primary key property of entity <index>, or -1.
function(own_key_index json index out)
   set(found -1)
   string(JSON count ERROR_VARIABLE err LENGTH "${json}" entities ${index} properties)
   if(NOT err AND count GREATER 0)
      math(EXPR last "${count} - 1")
      foreach(p RANGE ${last})
         string(JSON pk ERROR_VARIABLE err GET "${json}" entities ${index} properties ${p} primary_key)
         if(NOT err AND pk)
            set(found ${p})
            break()
         endif()
      endforeach()
   endif()
   set(${out} ${found} PARENT_SCOPE)
endfunction()

if(PIMPL)
   string(JSON entity_count LENGTH "${json}" entities)
   math(EXPR last_entity "${entity_count} - 1")
   set(keys "")
   foreach(i RANGE ${last_entity})
      entity_key("${json}" ${i} key)
      list(APPEND keys "${key}")
   endforeach()
   foreach(i RANGE ${last_entity})
      string(JSON parent ERROR_VARIABLE err GET "${json}" entities ${i} parent)
      if(err OR parent STREQUAL "")
         continue()
      endif()
      own_key_index("${json}" ${i} own)
      if(own GREATER -1)
         continue()
      endif()
      set(has_relation FALSE)
      string(JSON count ERROR_VARIABLE err LENGTH "${json}" entities ${i} properties)
      if(NOT err AND count GREATER 0)
         math(EXPR last "${count} - 1")
         foreach(p RANGE ${last})
            string(JSON rel ERROR_VARIABLE err GET "${json}" entities ${i} properties ${p} relation)
            if(NOT err)
               set(has_relation TRUE)
            endif()
         endforeach()
      else()
         set(count 0)
      endif()
      if(NOT has_relation)
         continue()
      endif()
      # Walk up to the ancestor that holds the key.
      set(ancestor "${parent}")
      set(key_json "")
      while(NOT ancestor STREQUAL "" AND key_json STREQUAL "")
         list(FIND keys "${ancestor}" a)
         if(a EQUAL -1)
            break()
         endif()
         own_key_index("${json}" ${a} k)
         if(k GREATER -1)
            string(JSON key_json GET "${json}" entities ${a} properties ${k})
         else()
            string(JSON ancestor ERROR_VARIABLE err GET "${json}" entities ${a} parent)
            if(err)
               set(ancestor "")
            endif()
         endif()
      endwhile()
      if(key_json STREQUAL "")
         continue()
      endif()
      message(STATUS "PIMPL variant: ${parent} no longer base of entity #${i}, which takes its key")
      string(JSON json REMOVE "${json}" entities ${i} parent)
      if(count EQUAL 0)
         string(JSON json SET "${json}" entities ${i} properties "[]")
      endif()
      string(JSON json SET "${json}" entities ${i} properties ${count} "${key_json}")
   endforeach()
endif()

string(TOLOWER "${project_upper}" model_base)
set(model_file "${WORK_DIR}/${model_base}.json")
file(WRITE "${model_file}" "${json}\n")

# The model must be free of the known limitations, or a failure would say nothing new.
execute_process(COMMAND "${TAVREL}" check "${model_file}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE check_out ERROR_VARIABLE check_err)
if(NOT rc EQUAL 0)
   fail_step("tavrel check failed (${rc}):\n${check_out}${check_err}")
endif()
# Semicolons would split the warnings into several list items.
string(REPLACE ";" "," check_text "${check_out}${check_err}")
string(REGEX MATCHALL "warning:[^\n]*" warnings "${check_text}")
foreach(w IN LISTS warnings)
   if(PIMPL OR NOT w MATCHES "PIMPL idiom")
      fail_step("the model hits a known limitation of the generated code:\n${w}")
   endif()
endforeach()

# ---- export -----------------------------------------------------------------------------------

execute_process(COMMAND "${TAVREL}" export "${model_file}" --lumor-path "${LUMOR}" --yes
                        "--TavrelCppExport_path=${OUT}"
                        "--TavrelCppExport_template_type=${STYLE}"
                        "--TavrelCppExport_generate_pimpl=${PIMPL}"
                        "--TavrelCppExport_generate_custom_files=${CUSTOM}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE export_out ERROR_VARIABLE export_err)
if(NOT rc EQUAL 0 OR NOT EXISTS "${OUT}/CMakeLists.txt")
   fail_step("tavrel export failed (${rc}):\n${export_out}${export_err}")
endif()

file(GLOB sources RELATIVE "${OUT}" "${OUT}/src/*.cpp" "${OUT}/custom/src/*.cpp")
list(SORT sources)
set(unity_source "src/${project_upper}_all.gen.cpp")
list(FIND sources "${unity_source}" at)
if(at EQUAL -1)
   fail_step("no unity-build source ${unity_source} in the export")
endif()
list(REMOVE_ITEM sources "${unity_source}")

if(BREAK)
   set(broken "")
   foreach(s IN LISTS sources)
      file(READ "${OUT}/${s}" text)
      if(text MATCHES "\n   t\\.setName\\(\"[^\"\n]*\"\\);")
         string(REGEX REPLACE "(\n   t\\.setName\\(\"[^\"\n]*\"\\));" "\\1" text "${text}")
         file(WRITE "${OUT}/${s}" "${text}")
         set(broken "${s}")
         break()
      endif()
   endforeach()
   if(broken STREQUAL "")
      fail_step("found no registration statement to break")
   endif()
   message(STATUS "removed the semicolon after t.setName(...) in ${broken}")
endif()

if(BUILD_MODES STREQUAL "" AND NOT BREAK)
   message(STATUS "export only: ${OUT}")
endif()

# ---- compile ----------------------------------------------------------------------------------

find_program(NINJA_PROGRAM NAMES ninja ninja-build)
set(generator_args "")
if(NINJA_PROGRAM)
   set(generator_args -G Ninja)
endif()
set(no_pch OFF)
if(NO_PCH)
   set(no_pch ON)
endif()

# Every source must really be compiled, or a missing list entry would pass unnoticed.
# Reads mode, unity and listing, what the build system was given (compile commands, Makefile).
macro(check_coverage)
   if(unity)
      file(READ "${OUT}/${unity_source}" unity_text)
      foreach(s IN LISTS sources)
         string(FIND "${unity_text}" "#include \"../${s}\"" at)
         if(at EQUAL -1)
            fail_step("${unity_source} does not include ${s}")
         endif()
      endforeach()
      string(FIND "${listing}" "${project_upper}_all.gen.cpp" at)
      if(at EQUAL -1 OR NOT "${listing}" MATCHES "-D_ZY_UNITY_BUILD")
         fail_step("the ${mode} build does not compile ${unity_source} with _ZY_UNITY_BUILD defined")
      endif()
   else()
      foreach(s IN LISTS sources)
         string(FIND "${listing}" "${s}" at)
         if(at EQUAL -1)
            fail_step("the ${mode} build does not compile ${s}")
         endif()
      endforeach()
   endif()
endmacro()

foreach(mode IN LISTS BUILD_MODES)
   # Both CMake ways share one tree, so that the precompiled header is built once.
   set(build_dir "${OUT}/build-cmake")
   if(mode MATCHES "^qmake")
      set(build_dir "${OUT}/build-${mode}")
   endif()
   set(unity OFF)
   if(mode MATCHES "unity$")
      set(unity ON)
   endif()

   if(mode MATCHES "^qmake")
      if(NOT QMAKE)
         fail_step("build mode ${mode} needs QMAKE")
      endif()
      file(MAKE_DIRECTORY "${build_dir}")
      set(qmake_defines "")
      if(unity)
         list(APPEND qmake_defines "DEFINES+=_ZY_UNITY_BUILD")
      endif()
      if(no_pch)
         list(APPEND qmake_defines "DEFINES+=_ZY_NO_PRECOMPILED_HEADER")
      endif()
      # The fixture has no library to link: take it out again after the project file added it.
      execute_process(COMMAND "${QMAKE}" "${OUT}/${project_upper}.gen.pro" "CONFIG+=release" ${qmake_defines}
                              "QMAKE_CXXFLAGS_RELEASE=-O0 -Werror=return-type" -after "LIBS-=-lLumor"
                      WORKING_DIRECTORY "${build_dir}"
                      RESULT_VARIABLE rc OUTPUT_VARIABLE cfg_out ERROR_VARIABLE cfg_err)
      if(NOT rc EQUAL 0)
         fail_step("qmake on the generated project (${mode}) failed:\n${cfg_out}${cfg_err}")
      endif()
      file(READ "${build_dir}/Makefile" listing)
      set(build_command make -j${JOBS})
   else()
      # No optimisation, no debug information: only whether the code compiles matters.
      execute_process(COMMAND "${CMAKE_COMMAND}" -S "${OUT}" -B "${build_dir}" ${generator_args}
                              -DCMAKE_BUILD_TYPE= "-DCMAKE_CXX_FLAGS=-O0 -Werror=return-type"
                              -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
                              -D_ZY_UNITY_BUILD=${unity} -D_ZY_NO_PRECOMPILED_HEADER=${no_pch}
                      RESULT_VARIABLE rc OUTPUT_VARIABLE cfg_out ERROR_VARIABLE cfg_err)
      if(NOT rc EQUAL 0)
         fail_step("configuring the generated project (${mode}) failed:\n${cfg_out}${cfg_err}")
      endif()
      file(READ "${build_dir}/compile_commands.json" listing)
      set(build_command "${CMAKE_COMMAND}" --build "${build_dir}" --parallel ${JOBS})
   endif()
   check_coverage()

   execute_process(COMMAND ${build_command} WORKING_DIRECTORY "${build_dir}"
                   RESULT_VARIABLE rc OUTPUT_VARIABLE build_out ERROR_VARIABLE build_err)
   if(BREAK)
      if(rc EQUAL 0)
         message(STATUS "compile check (break mode): the broken source compiled")
         return()
      endif()
      string(REPLACE "/" "[/\\\\]" broken_re "${broken}")
      string(REPLACE "." "\\." broken_re "${broken_re}")
      if(unity)
         set(broken_re "(${broken_re}|${project_upper}_all\\.gen\\.cpp)")
      endif()
      if("${build_out}${build_err}" MATCHES "${broken_re}[^\n]*error")
         if(NOT KEEP)
            file(REMOVE_RECURSE "${WORK_DIR}")
         endif()
         message(FATAL_ERROR "compile check (break mode): ${broken} failed to compile, as it should:\n${build_out}${build_err}")
      endif()
      message(STATUS "compile check (break mode): failed elsewhere than in ${broken}:\n${build_out}${build_err}")
      return()
   endif()
   if(NOT rc EQUAL 0)
      message(FATAL_ERROR "building the generated project (${mode}) failed:\n${build_out}${build_err}")
   endif()
   message(STATUS "${mode} build of the generated project: OK")
endforeach()

# ---- client side ------------------------------------------------------------------------------

# A program using the library sees its headers without _BUILDING_<PROJECT>, through the import
# variants of the export macros.
if(CONSUMER AND NOT BREAK)
   set(consumer_dir "${WORK_DIR}/consumer")
   file(MAKE_DIRECTORY "${consumer_dir}")
   file(WRITE "${consumer_dir}/consumer.cpp"
        "#include \"${project_upper}_all_include.gen.h\"\n\nint consumer_entry() { return 0; }\n")
   file(WRITE "${consumer_dir}/CMakeLists.txt"
        "cmake_minimum_required(VERSION 3.16)\n"
        "project(consumer LANGUAGES CXX)\n"
        "add_subdirectory(\"${LUMOR}\" lumor)\n"
        "add_library(consumer OBJECT consumer.cpp)\n"
        "target_include_directories(consumer PRIVATE \"${OUT}/include\")\n"
        "target_link_libraries(consumer PRIVATE Lumor)\n")
   execute_process(COMMAND "${CMAKE_COMMAND}" -S "${consumer_dir}" -B "${consumer_dir}/build" ${generator_args}
                           -DCMAKE_BUILD_TYPE= "-DCMAKE_CXX_FLAGS=-O0 -Werror=return-type"
                   RESULT_VARIABLE rc OUTPUT_VARIABLE cfg_out ERROR_VARIABLE cfg_err)
   if(NOT rc EQUAL 0)
      message(FATAL_ERROR "configuring the client of the generated library failed:\n${cfg_out}${cfg_err}")
   endif()
   execute_process(COMMAND "${CMAKE_COMMAND}" --build "${consumer_dir}/build"
                   RESULT_VARIABLE rc OUTPUT_VARIABLE build_out ERROR_VARIABLE build_err)
   if(NOT rc EQUAL 0)
      message(FATAL_ERROR "compiling a client of the generated library failed:\n${build_out}${build_err}")
   endif()
   message(STATUS "client of the generated library: OK")
endif()

if(BREAK)
   message(STATUS "compile check (break mode): nothing failed")
   return()
endif()

# Generated projects are large (precompiled headers); keep them only when something failed.
if(NOT KEEP)
   file(REMOVE_RECURSE "${WORK_DIR}")
endif()
