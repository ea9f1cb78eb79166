# What `cmake --install` puts where, and the Debian package built from it by CPack.

# The build tree mirrors the installed share/ folders, so that the programs find the manual the
# same way (relative to themselves) whether they run from the build tree or from an install.
file(GLOB TAVREL_DOC_IMAGES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/images/*.png)
configure_file(${CMAKE_SOURCE_DIR}/docs/user_guide.html ${CMAKE_BINARY_DIR}/${TAVREL_INSTALL_DOC_DIR}/user_guide.html COPYONLY)
foreach(img ${TAVREL_DOC_IMAGES})
  get_filename_component(name ${img} NAME)
  configure_file(${img} ${CMAKE_BINARY_DIR}/${TAVREL_INSTALL_DOC_DIR}/images/${name} COPYONLY)
endforeach()

install(FILES ${CMAKE_SOURCE_DIR}/docs/user_guide.html DESTINATION ${TAVREL_INSTALL_DOC_DIR})
install(FILES ${TAVREL_DOC_IMAGES} DESTINATION ${TAVREL_INSTALL_DOC_DIR}/images)
install(FILES ${CMAKE_SOURCE_DIR}/examples/user_script.js DESTINATION ${TAVREL_INSTALL_DATA_DIR}/samples RENAME custom_script.js)
install(FILES ${CMAKE_SOURCE_DIR}/examples/shop.json ${CMAKE_SOURCE_DIR}/examples/library.json
              ${CMAKE_SOURCE_DIR}/examples/user_script.js
              ${CMAKE_SOURCE_DIR}/examples/custom_template.h ${CMAKE_SOURCE_DIR}/examples/custom_template.cpp
        DESTINATION ${TAVREL_INSTALL_DATA_DIR}/examples)
install(FILES ${CMAKE_SOURCE_DIR}/data/tavrel-gui.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/data/tavrel.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${CMAKE_SOURCE_DIR}/docs/tavrel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The CMake package: find_package(Tavrel) gives the imported program Tavrel::tavrel and
# tavrel_export_cpp(). Its paths are relative to the package folder, so the tree can move.
include(CMakePackageConfigHelpers)
set(TAVREL_INSTALL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tavrel)
install(EXPORT TavrelTargets NAMESPACE Tavrel:: DESTINATION ${TAVREL_INSTALL_CMAKE_DIR})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/package/TavrelConfig.cmake.in
                              ${CMAKE_BINARY_DIR}/cmake/TavrelConfig.cmake
                              INSTALL_DESTINATION ${TAVREL_INSTALL_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/cmake/TavrelConfigVersion.cmake
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/cmake/TavrelConfig.cmake ${CMAKE_BINARY_DIR}/cmake/TavrelConfigVersion.cmake
              ${CMAKE_SOURCE_DIR}/cmake/package/TavrelExportCpp.cmake
        DESTINATION ${TAVREL_INSTALL_CMAKE_DIR})

# Editors validate models against the schema; the shell completes commands, options and files.
install(FILES ${CMAKE_SOURCE_DIR}/share/schema/tavrel-model.schema.json DESTINATION ${TAVREL_INSTALL_DATA_DIR})
install(FILES ${CMAKE_SOURCE_DIR}/share/completion/tavrel DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavrel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Tavrel developers <tavrel@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Entity modeller with a C++ code export for the Lumor ORM")
set(CPACK_PACKAGE_DESCRIPTION "Tavrel imports entity models, checks them and exports them as complete C++ source projects for the Lumor object-relational mapping library, from the command line (tavrel) or a desktop window (tavrel-gui).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
# The libraries the programs link (Qt, Graphviz for the diagram, xxHash for the export record), plus the two Qt plug-ins they load at run time (the SQLite
# driver for project files; the platform plug-ins ship with libqt6gui6).
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libc6, libstdc++6, libgcc-s1, libqt6core6 (>= 6.4), libqt6gui6 (>= 6.4), libqt6widgets6 (>= 6.4), libqt6sql6 (>= 6.4), libqt6sql6-sqlite (>= 6.4), libqt6qml6 (>= 6.4), libgvc6, libcgraph6, libxxhash0")
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR})
include(CPack)
