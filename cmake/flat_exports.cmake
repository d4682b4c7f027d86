# The functions of marvo_c.h are exported beside the classes, by their plain names. marvo/flat/exports.txt has
# each with the bytes of its arguments on 32-bit Windows, where a stdcall function is `name@bytes` to
# compilers: the DLL's def file names it as it is to be called, that of the import library as compilers do.
set(flat_exports ${marvo_SOURCE_DIR}/marvo/flat/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${flat_exports})
file(STRINGS ${flat_exports} flat_lines REGEX "^marvo_")
set(flat_names)
set(flat_decorated)
foreach(line IN LISTS flat_lines)
    string(REPLACE " " ";" line "${line}")
    list(GET line 0 name)
    list(GET line 1 bytes)
    string(APPEND flat_names "    ${name}\n")
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        string(APPEND flat_decorated "    ${name}@${bytes}\n")
    else()
        string(APPEND flat_decorated "    ${name}\n")
    endif()
endforeach()
file(CONFIGURE OUTPUT ${marvo_BINARY_DIR}/marvo_c.def CONTENT "EXPORTS\n${flat_names}")
file(CONFIGURE OUTPUT ${marvo_BINARY_DIR}/marvo_c_import.def
    CONTENT "LIBRARY marvo.dll\nEXPORTS\n${flat_decorated}")

# Gives a DLL of the library's objects the flat functions.
function(marvo_export_flat target)
    target_sources(${target} PRIVATE ${marvo_BINARY_DIR}/marvo_c.def)
    if(MINGW AND CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup)
    endif()
endfunction()
marvo_export_flat(marvo)

# marvo_c: what a program links with that uses the flat functions alone.
if(MINGW)
    set(library ${MARVO_LIBRARY_DIR}/libmarvo_c.a)
    add_custom_command(OUTPUT ${library} DEPENDS ${marvo_BINARY_DIR}/marvo_c_import.def
        COMMAND ${CMAKE_COMMAND} -E make_directory ${MARVO_LIBRARY_DIR}
        # The names of its temporary files and its own path, as given, get into the library.
        COMMAND ${CMAKE_COMMAND} -E chdir ${MARVO_LIBRARY_DIR} ${CMAKE_DLLTOOL} --kill-at
            --deterministic-libraries --temp-prefix marvo_c
            --input-def ${marvo_BINARY_DIR}/marvo_c_import.def --output-lib libmarvo_c.a VERBATIM)
    add_custom_target(marvo_c_library ALL DEPENDS ${library})
    add_library(marvo_c INTERFACE)
    target_link_libraries(marvo_c INTERFACE ${library})
    add_dependencies(marvo_c marvo_c_library marvo)
else()
    add_library(marvo_c INTERFACE)
    target_link_libraries(marvo_c INTERFACE marvo)
endif()
target_include_directories(marvo_c INTERFACE ${marvo_SOURCE_DIR})
