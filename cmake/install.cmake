# What `cmake --install` puts down; every place is relative, so that the folder may be moved. Components:
# runtime (the DLL), programs, devel (headers, import libraries, CMake's and pkg-config's files),
# documentation.
include(CMakePackageConfigHelpers)

install(TARGETS marvo EXPORT marvo-targets
    RUNTIME DESTINATION bin COMPONENT runtime
    ARCHIVE DESTINATION lib COMPONENT devel)
foreach(program marvo-replay dvrec marvo-host)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION bin COMPONENT programs)
    endif()
endforeach()

install(SCRIPT cmake/install_headers.cmake COMPONENT devel)
if(MINGW)
    install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/libmarvo.a ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/libmarvo_c.a
        DESTINATION lib COMPONENT devel)
endif()
# For Microsoft's linker.
install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/marvo.lib DESTINATION lib COMPONENT devel OPTIONAL)

set(MARVO_CMAKE_DIR lib/cmake/marvo)
install(EXPORT marvo-targets NAMESPACE marvo:: DESTINATION ${MARVO_CMAKE_DIR} COMPONENT devel)
configure_package_config_file(cmake/marvo-config.cmake.in ${CMAKE_BINARY_DIR}/package/marvo-config.cmake
    INSTALL_DESTINATION ${MARVO_CMAKE_DIR} NO_SET_AND_CHECK_MACRO)
# Until 1.0 the second number changes with what breaks a host. The file also refuses hosts of another width.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/marvo-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/package/marvo-config.cmake
    ${CMAKE_BINARY_DIR}/package/marvo-config-version.cmake
    DESTINATION ${MARVO_CMAKE_DIR} COMPONENT devel)
foreach(library marvo marvo_c)
    configure_file(cmake/marvo.pc.in package/${library}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/package/${library}.pc DESTINATION lib/pkgconfig COMPONENT devel)
endforeach()

# For other languages.
install(DIRECTORY bindings/csharp bindings/pascal bindings/python DESTINATION share/marvo COMPONENT devel
    FILES_MATCHING REGEX "\\.(cs|pas|py)$")

# Beside each other as in the sources, so that the links hold.
set(MARVO_DOC_DIR share/doc/marvo)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE
    DESTINATION ${MARVO_DOC_DIR} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${MARVO_DOC_DIR} COMPONENT documentation
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
