# marvo_delay_import(target dll functions...): has the program load the system's DLL when it first calls one of these
# functions, instead of at its start. A function is given with the bytes of its arguments (Sleep@4), as 32-bit
# Windows decorates its name; one that is not in the list is imported as usual.
function(marvo_delay_import target dll)
    if(MSVC)
        target_link_libraries(${target} PRIVATE ${dll} delayimp)
        target_link_options(${target} PRIVATE /DELAYLOAD:${dll}.dll)
        return()
    endif()
    set(machine i386)
    set(names ${ARGN})
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(machine i386:x86-64)
        list(TRANSFORM names REPLACE "@.*" "")
    endif()
    list(JOIN names "\n" lines)
    set(definition ${CMAKE_CURRENT_BINARY_DIR}/${dll}_delay.def)
    set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${dll}_delay.a)
    file(CONFIGURE OUTPUT ${definition} CONTENT "LIBRARY ${dll}.dll\nEXPORTS\n${lines}\n")
    add_custom_command(OUTPUT ${library}
        COMMAND ${CMAKE_DLLTOOL} -m ${machine} --kill-at -d ${definition} --output-delaylib ${library}
        DEPENDS ${definition} VERBATIM)
    add_custom_target(${target}_${dll}_delay DEPENDS ${library})
    add_dependencies(${target} ${target}_${dll}_delay)
    target_link_libraries(${target} PRIVATE ${library} delayimp)
endfunction()
