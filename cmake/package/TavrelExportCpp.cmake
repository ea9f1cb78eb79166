# tavrel_export_cpp(<target> MODEL <model.json|project.tavrel>
#                   [STYLE <0..3>] [PIMPL] [CUSTOM_FILES]
#                   [OUTPUT_DIR <dir>] [LUMOR_DIR <dir>]
#                   [SCRIPT <file.js>] [HEADER_TEMPLATE <file> SOURCE_TEMPLATE <file>]
#                   [DEPENDS <file>...])
#
# Exports the model with TavrelCppExport at build time and compiles the generated sources as
# part of <target>. The files an export writes are listed at configure time
# (tavrel export --list-outputs); configure runs again when the model changes. The export runs
# again only when the model, a template, the script or a DEPENDS file changes, and rewrites
# only the files whose text changed, so only those are compiled again.
#
# OUTPUT_DIR defaults to ${CMAKE_CURRENT_BINARY_DIR}/<target>_tavrel; LUMOR_DIR to the variable
# LUMOR_DIR, then the environment variable LUMOR_DIR. <target> has to link Lumor itself.

function(tavrel_export_cpp target)
  cmake_parse_arguments(PARSE_ARGV 1 TE "PIMPL;CUSTOM_FILES"
                        "MODEL;STYLE;OUTPUT_DIR;LUMOR_DIR;SCRIPT;HEADER_TEMPLATE;SOURCE_TEMPLATE" "DEPENDS")
  if(TE_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tavrel_export_cpp: unknown arguments: ${TE_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT TARGET "${target}")
    message(FATAL_ERROR "tavrel_export_cpp: '${target}' is not a target")
  endif()
  if(NOT TE_MODEL)
    message(FATAL_ERROR "tavrel_export_cpp: MODEL is required")
  endif()
  get_filename_component(model "${TE_MODEL}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
  if(NOT EXISTS "${model}")
    message(FATAL_ERROR "tavrel_export_cpp: model '${model}' does not exist")
  endif()
  if(NOT DEFINED TE_STYLE)
    set(TE_STYLE 0)
  endif()
  if(NOT TE_STYLE MATCHES "^[0-3]$")
    message(FATAL_ERROR "tavrel_export_cpp: STYLE must be 0, 1, 2 or 3 (custom templates: HEADER_TEMPLATE and SOURCE_TEMPLATE)")
  endif()
  if(TE_HEADER_TEMPLATE OR TE_SOURCE_TEMPLATE)
    if(NOT (TE_HEADER_TEMPLATE AND TE_SOURCE_TEMPLATE))
      message(FATAL_ERROR "tavrel_export_cpp: HEADER_TEMPLATE and SOURCE_TEMPLATE go together")
    endif()
    set(TE_STYLE 4)
  endif()
  if(NOT TE_OUTPUT_DIR)
    set(TE_OUTPUT_DIR "${CMAKE_CURRENT_BINARY_DIR}/${target}_tavrel")
  endif()
  get_filename_component(out "${TE_OUTPUT_DIR}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
  if(NOT TE_LUMOR_DIR)
    if(LUMOR_DIR)
      set(TE_LUMOR_DIR "${LUMOR_DIR}")
    else()
      set(TE_LUMOR_DIR "$ENV{LUMOR_DIR}")
    endif()
  endif()
  if(NOT TE_LUMOR_DIR)
    message(FATAL_ERROR "tavrel_export_cpp: give LUMOR_DIR (argument, variable or environment)")
  endif()
  get_filename_component(lumor "${TE_LUMOR_DIR}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")

  set(pimpl 0)
  if(TE_PIMPL)
    set(pimpl 1)
  endif()
  set(custom 0)
  if(TE_CUSTOM_FILES)
    set(custom 1)
  endif()
  set(inputs "${model}")
  set(args --lumor-path "${lumor}" --yes "--TavrelCppExport_path=${out}"
           "--TavrelCppExport_template_type=${TE_STYLE}" "--TavrelCppExport_generate_pimpl=${pimpl}"
           "--TavrelCppExport_generate_custom_files=${custom}")
  foreach(kind SCRIPT HEADER_TEMPLATE SOURCE_TEMPLATE)
    if(TE_${kind})
      get_filename_component(file "${TE_${kind}}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
      list(APPEND inputs "${file}")
      if(kind STREQUAL "SCRIPT")
        list(APPEND args "--TavrelCppExport_custom_javacript=${file}")
      elseif(kind STREQUAL "HEADER_TEMPLATE")
        list(APPEND args "--TavrelCppExport_template_header=${file}")
      else()
        list(APPEND args "--TavrelCppExport_template_source=${file}")
      endif()
    endif()
  endforeach()
  foreach(file IN LISTS TE_DEPENDS)
    get_filename_component(file "${file}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    list(APPEND inputs "${file}")
  endforeach()

  # The project file lives in the build tree: nothing is written beside the model.
  set(work "${CMAKE_CURRENT_BINARY_DIR}/tavrel_${target}")
  get_filename_component(name "${model}" NAME_WE)
  set(project_file "${work}/${name}.tavrel")
  get_target_property(tavrel Tavrel::tavrel LOCATION)
  if(model MATCHES "\\.[jJ][sS][oO][nN]$")
    set(import_step COMMAND Tavrel::tavrel import "${model}" "${project_file}")
  else()
    set(import_step COMMAND "${CMAKE_COMMAND}" -E copy_if_different "${model}" "${project_file}")
  endif()

  # Configure time: the list of outputs, from a dry run that writes no generated file.
  file(MAKE_DIRECTORY "${work}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${inputs})
  if(model MATCHES "\\.[jJ][sS][oO][nN]$")
    execute_process(COMMAND "${tavrel}" import "${model}" "${project_file}"
                    RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
  else()
    execute_process(COMMAND "${CMAKE_COMMAND}" -E copy "${model}" "${project_file}" RESULT_VARIABLE rc ERROR_VARIABLE err)
  endif()
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "tavrel_export_cpp: cannot read the model '${model}':\n${err}")
  endif()
  execute_process(COMMAND "${tavrel}" export "${project_file}" --list-outputs ${args}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE listing ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "tavrel_export_cpp: 'tavrel export --list-outputs' failed for '${model}':\n${err}")
  endif()
  string(REGEX REPLACE "\n$" "" listing "${listing}")
  string(REPLACE "\n" ";" outputs "${listing}")
  if(NOT outputs)
    message(FATAL_ERROR "tavrel_export_cpp: the export of '${model}' writes no file")
  endif()

  # The export macros are on their building side within the target: their name comes from the
  # project name, as in <PROJECT>.gen.pro.
  set(sources "")
  set(headers "")
  set(project_name "")
  foreach(file IN LISTS outputs)
    if(file MATCHES "/src/[^/]+_all\\.gen\\.cpp$")
      continue()   # the unity source repeats the others
    elseif(file MATCHES "\\.cpp$")
      list(APPEND sources "${file}")
    elseif(file MATCHES "\\.h$")
      list(APPEND headers "${file}")
    elseif(file MATCHES "/([^/]+)\\.gen\\.pro$")
      set(project_name "${CMAKE_MATCH_1}")
    endif()
  endforeach()

  # The stamp tells the build that the export ran; the generated files are byproducts, which
  # keep their old time when the export left them alone (Ninja restat), so nothing depending on
  # them is rebuilt.
  set(stamp "${work}/export.stamp")
  add_custom_command(OUTPUT "${stamp}"
                     BYPRODUCTS ${outputs}
                     ${import_step}
                     COMMAND Tavrel::tavrel export "${project_file}" ${args}
                     COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
                     DEPENDS ${inputs} "$<TARGET_FILE:Tavrel::tavrel>"
                     COMMENT "Exporting ${TE_MODEL} with Tavrel"
                     VERBATIM)
  add_custom_target(${target}_tavrel_export DEPENDS "${stamp}")
  add_dependencies(${target} ${target}_tavrel_export)
  target_sources(${target} PRIVATE ${sources} ${headers})
  target_include_directories(${target} PUBLIC "${out}/include")
  if(TE_CUSTOM_FILES)
    target_include_directories(${target} PUBLIC "${out}/custom/include")
  endif()
  if(project_name)
    target_compile_definitions(${target} PRIVATE "_BUILDING_${project_name}")
  endif()
  if(TE_STYLE EQUAL 3)
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
  endif()
  set_property(TARGET ${target} APPEND PROPERTY TAVREL_EXPORT_OUTPUTS ${outputs})
endfunction()
