# Compiles through ccache where there is one, unless a launcher was chosen (CMAKE_CXX_COMPILER_LAUNCHER,
# empty: none; the environment variable of that name counts as well). Included before project(), which reads
# the variable. The presets set what ccache needs for precompiled headers.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER AND NOT DEFINED ENV{CMAKE_CXX_COMPILER_LAUNCHER})
    find_program(MARVO_CCACHE ccache)
    mark_as_advanced(MARVO_CCACHE)
    if(MARVO_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${MARVO_CCACHE} CACHE STRING "what calls the compiler")
    endif()
endif()
