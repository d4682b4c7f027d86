# Header-only libraries for the programs around the library (host, tools, bench), from Debian's packages. The
# library itself depends on nothing but the C++ standard library and Windows.
#
# The compiler must not see /usr/include, whose headers are the build machine's, so each library gets a folder
# of its own in which a link leads to its headers. As system headers they give no warnings. A program links
# the target it wants:
#
#   nlohmann_json  #include <nlohmann/json.hpp>
#   cli11          #include <CLI/CLI.hpp>
set(MARVO_THIRD_PARTY_DIR /usr/include CACHE PATH "where the folders of header-only libraries lie")

# marvo_header_library(target folder header package)
function(marvo_header_library target folder header package)
    if(NOT EXISTS ${MARVO_THIRD_PARTY_DIR}/${folder}/${header})
        message(FATAL_ERROR "${MARVO_THIRD_PARTY_DIR}/${folder}/${header} is missing: "
            "install the package ${package}, or run scripts/setup.sh")
    endif()
    set(view ${CMAKE_BINARY_DIR}/third_party/${target})
    file(MAKE_DIRECTORY ${view})
    file(CREATE_LINK ${MARVO_THIRD_PARTY_DIR}/${folder} ${view}/${folder} COPY_ON_ERROR SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${view})
endfunction()

marvo_header_library(nlohmann_json nlohmann json.hpp nlohmann-json3-dev)
marvo_header_library(cli11 CLI CLI.hpp libcli11-dev)
