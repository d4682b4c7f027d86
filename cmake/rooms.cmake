# The rooms of the library. Each is an object library, and together they are the one DLL. A room is compiled
# with a view of its own: build/<target>/rooms/<room>/marvo/<room> links to the room's folder, and only the
# views of the rooms that it stands on are on its include path. So an include of a room above it does not
# compile.
#
# For programs that link what they need of some rooms into themselves there is marvo_<room>_static, which
# brings the rooms below it along, and with them only their include directories.

# marvo_room(name [STANDS_ON rooms...] SOURCES sources...)
function(marvo_room name)
    cmake_parse_arguments(arg "" "" "STANDS_ON;SOURCES" ${ARGN})
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR
            "marvo_room(${name}): '${arg_UNPARSED_ARGUMENTS}' is neither behind STANDS_ON nor SOURCES")
    endif()
    set(view ${marvo_BINARY_DIR}/rooms/${name})
    file(MAKE_DIRECTORY ${view}/marvo)
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${view}/marvo/${name} COPY_ON_ERROR SYMBOLIC)
    add_library(marvo_${name}_view INTERFACE)
    target_include_directories(marvo_${name}_view INTERFACE ${view})
    set(lower_static)
    foreach(lower IN LISTS arg_STANDS_ON)
        if(NOT TARGET marvo_${lower}_view)
            message(FATAL_ERROR "The room '${name}' stands on '${lower}', which is no room below it")
        endif()
        target_link_libraries(marvo_${name}_view INTERFACE marvo_${lower}_view)
        list(PREPEND lower_static marvo_${lower}_static)
    endforeach()
    if(arg_SOURCES)
        add_library(marvo_${name} OBJECT ${arg_SOURCES})
        target_link_libraries(marvo_${name} PRIVATE marvo_${name}_view marvo_options)
        target_compile_definitions(marvo_${name} PRIVATE MARVO_BUILD)
        # Reading these takes longer than compiling most sources. DirectShow is left to the rooms that use it.
        # Read once for all rooms: the lowest one's serves the others.
        if(TARGET marvo_core AND NOT name STREQUAL core)
            target_precompile_headers(marvo_${name} REUSE_FROM marvo_core)
        else()
            target_precompile_headers(marvo_${name} PRIVATE <winsock2.h> <windows.h> <objbase.h> <oleauto.h>
                <algorithm> <atomic> <memory> <string> <utility> <vector>)
        endif()
        add_library(marvo_${name}_static STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:marvo_${name}>)
        set_target_properties(marvo_${name}_static PROPERTIES LINKER_LANGUAGE CXX)
        target_link_libraries(marvo_${name}_static INTERFACE marvo_${name}_view marvo_options ${lower_static}
            strmiids uuid)
        target_compile_definitions(marvo_${name}_static INTERFACE MARVO_STATIC)
    endif()
endfunction()
