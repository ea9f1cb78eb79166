# Compile-check stand-in for the Lumor build settings that generated CMake projects include.
# Options (cache variables, as the generated lists expect):
#   _ZY_UNITY_BUILD             compile the single unity-build source instead of one per file
#   _ZY_NO_PRECOMPILED_HEADER   no precompiled header (headers then include it themselves)

find_package(Qt6 REQUIRED COMPONENTS Core Sql)

set(ZY_LIBRARIES Qt6::Core Qt6::Sql)

if(NOT CMAKE_CXX_STANDARD)
   set(CMAKE_CXX_STANDARD 17)
   set(CMAKE_CXX_STANDARD_REQUIRED ON)
endif()

# The generated unity source is empty unless the compiler sees the same switch. Only that source
# tests it, so it is given to that source alone: the precompiled header stays valid when a build
# tree is switched between both ways.
if(_ZY_UNITY_BUILD)
   set_property(SOURCE "${CMAKE_CURRENT_SOURCE_DIR}/src/${PROJECT_NAME}_all.gen.cpp"
                APPEND PROPERTY COMPILE_DEFINITIONS _ZY_UNITY_BUILD)
endif()

if(_ZY_NO_PRECOMPILED_HEADER)
   add_compile_definitions(_ZY_NO_PRECOMPILED_HEADER)
   set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# Groups the files by directory in IDE project views.
function(zy_auto_source_group files)
   foreach(file IN LISTS files)
      get_filename_component(dir "${file}" DIRECTORY)
      string(REGEX REPLACE "^\\./" "" dir "${dir}")
      string(REPLACE "/" "\\\\" group "${dir}")
      source_group("${group}" FILES "${file}")
   endforeach()
endfunction()
