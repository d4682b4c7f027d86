# lib/marvo.lib: what Microsoft's linker takes for programs that use marvo_c.h. 32-bit programs ask for
# _name@bytes there, as in the list that MinGW's library is made of; with --kill-at the library tells the
# linker that the DLL calls it name.
find_program(MARVO_DLLTOOL NAMES llvm-dlltool llvm-dlltool-16 llvm-dlltool-15 llvm-dlltool-14)
mark_as_advanced(MARVO_DLLTOOL)
if(NOT MARVO_DLLTOOL)
    message(WARNING "llvm-dlltool is missing (package llvm): there will be no marvo.lib")
    return()
endif()
set(names ${CMAKE_BINARY_DIR}/marvo_c_import.def)
set(library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/marvo.lib)
set(machine i386)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(machine i386:x86-64)
endif()
add_custom_command(OUTPUT ${library} DEPENDS ${names} VERBATIM
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}
    COMMAND ${MARVO_DLLTOOL} --kill-at -m ${machine} -d ${names} -l ${library})
add_custom_target(marvo_msvc_library ALL DEPENDS ${library})
