# Compile and link options that everything of ours shares; private to our own targets. Who uses the library
# needs none of them.
add_library(marvo_options INTERFACE)
target_compile_definitions(marvo_options INTERFACE
    UNICODE _UNICODE NOMINMAX NO_DSHOW_STRSAFE _WIN32_WINNT=0x0602 WINVER=0x0602)

if(MSVC)
    # 4251: the DLL and its hosts are built with the same compiler, so private members need not be exported.
    target_compile_options(marvo_options INTERFACE
        /W4 $<$<BOOL:${MARVO_WERROR}>:/WX> /wd4251 /permissive- /EHsc)
    target_compile_definitions(marvo_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    # Not for the resource compiler, which knows none of them.
    target_compile_options(marvo_options INTERFACE "$<$<COMPILE_LANGUAGE:C,CXX>:-Wall;-Wextra>"
        "$<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<BOOL:${MARVO_WERROR}>>:-Werror>"
        # Addresses resolve to lines with Wine's debugger only from DWARF 4 and with frame pointers. Who wants
        # variables as well takes a debug build: to write them down takes a third of the compiler's time.
        "$<$<COMPILE_LANGUAGE:C,CXX>:-gdwarf-4;-g$<IF:$<CONFIG:Debug>,2,1>;-fno-omit-frame-pointer>"
        # Many members answer on a null object; without this the compiler drops the test.
        "$<$<COMPILE_LANGUAGE:C,CXX>:-fno-delete-null-pointer-checks>")
    # The same sources give the same bytes, in whatever folder and at whatever time. (The folder of the build
    # mostly lies in that of the sources; the last that fits counts.)
    set(maps ${marvo_SOURCE_DIR}=. ${CMAKE_BINARY_DIR}=./build ${marvo_BINARY_DIR}=./build)
    list(TRANSFORM maps PREPEND -ffile-prefix-map=)
    target_compile_options(marvo_options INTERFACE "$<$<COMPILE_LANGUAGE:C,CXX>:${maps}>")
    target_link_options(marvo_options INTERFACE -static -Wl,--no-insert-timestamp)
endif()

# For programs whose work is done by the library, by the system or by a person: optimising their own code and
# the templates of command lines and JSON takes long and gains nothing.
add_library(marvo_program_options INTERFACE)
if(NOT MSVC)
    target_compile_options(marvo_program_options INTERFACE
        "$<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<NOT:$<CONFIG:Debug>>>:-O1>")
endif()
