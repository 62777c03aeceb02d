# Flags that every target shares, and the function that declares a library of one floor.

add_library(tessaro_options INTERFACE)
target_compile_options(tessaro_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror
    # In a batch, names of one source hide those of another.
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>
    # The method truncates single-precision results: a fused multiply-add would change the last bit and with it
    # the result, so the compiler must not contract expressions.
    -ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(tessaro_options INTERFACE -march=x86-64-v2)
endif()

# tessaro_library(NAME folder FOLDER f HEADERS ... SOURCES ... LINKS ...)
#
# Headers are included as "folder/header.h". Each library shows its own headers through a directory of links made
# for it alone, so that an include compiles only where the library is linked: the linker list is the layering.
# A header that is the first include of its own source is compiled alone there; the target
# all_verify_interface_header_sets compiles the others one by one.
function(tessaro_library NAME)
    cmake_parse_arguments(ARG "" "FOLDER" "HEADERS;SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    set(root ${CMAKE_BINARY_DIR}/headers/${NAME})
    set(links)
    set(links_with_source)
    foreach(header IN LISTS ARG_HEADERS)
        cmake_path(GET header PARENT_PATH subfolder)
        file(MAKE_DIRECTORY ${root}/${ARG_FOLDER}/${subfolder})
        file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${root}/${ARG_FOLDER}/${header} SYMBOLIC)
        cmake_path(REPLACE_EXTENSION header LAST_ONLY cpp OUTPUT_VARIABLE source)
        if(source IN_LIST ARG_SOURCES)
            list(APPEND links_with_source ${root}/${ARG_FOLDER}/${header})
        else()
            list(APPEND links ${root}/${ARG_FOLDER}/${header})
        endif()
    endforeach()
    if(ARG_SOURCES)
        add_library(${NAME} STATIC ${ARG_SOURCES})
        set(scope PUBLIC)
        target_link_libraries(${NAME} PRIVATE tessaro_options ${ARG_PRIVATE_LINKS})
    else()
        add_library(${NAME} INTERFACE)
        set(scope INTERFACE)
    endif()
    target_sources(${NAME} ${scope}
        FILE_SET HEADERS BASE_DIRS ${root} FILES ${links}
        FILE_SET with_source TYPE HEADERS BASE_DIRS ${root} FILES ${links_with_source})
    target_link_libraries(${NAME} ${scope} ${ARG_LINKS})
    set_target_properties(${NAME} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON INTERFACE_HEADER_SETS_TO_VERIFY HEADERS)
endfunction()
