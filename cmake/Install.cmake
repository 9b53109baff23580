include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS qkdynam EXPORT qkdynamTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qkdynam)

# Only the public headers (src/CMakeLists.txt takes them from qkdynam.h), in
# their folders so that "zo/kel/StringBase.h" resolves the same way for
# consumers as it does inside the tree.
foreach(header IN LISTS QKDYNAM_PUBLIC_HEADERS)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${QKDYNAM_PUBLIC_INCLUDE_DIR}/${header}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qkdynam/${folder})
endforeach()

set(QKDYNAM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qkdynam)
install(EXPORT qkdynamTargets
    NAMESPACE qkdynam::
    DESTINATION ${QKDYNAM_CMAKE_DIR})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/qkdynamConfig.cmake.in
    ${PROJECT_BINARY_DIR}/qkdynamConfig.cmake
    INSTALL_DESTINATION ${QKDYNAM_CMAKE_DIR})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/qkdynamConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/qkdynamConfig.cmake
    ${PROJECT_BINARY_DIR}/qkdynamConfigVersion.cmake
    DESTINATION ${QKDYNAM_CMAKE_DIR})

file(RELATIVE_PATH QKDYNAM_PC_TO_PREFIX
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/qkdynam.pc.in
    ${PROJECT_BINARY_DIR}/qkdynam.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qkdynam.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
