# How every target of this project is compiled: language, warnings, visibility, sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(OVI_CCACHE ccache)
if(OVI_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${OVI_CCACHE})
endif()

if(OVI_SANITIZE)
    add_compile_options(-fsanitize=${OVI_SANITIZE} -fno-omit-frame-pointer -O1 -g1)
    add_link_options(-fsanitize=${OVI_SANITIZE})
    if(OVI_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
else()
    # A sanitizer resolves its own symbols at load time; every other build must link completely.
    add_link_options(-Wl,--no-undefined)
endif()
add_link_options(-Wl,-z,now -Wl,--as-needed)
if(OVI_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
else()
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Warnings of the house for one target, and the include roots: the tree and the platform folder.
function(ovi_target target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<BOOL:${OVI_WERROR}>:-Werror>)
    target_include_directories(${target} PRIVATE
        ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE" AND OVI_SANITIZE MATCHES "address")
        target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/sanitizer/leaks.cpp)
    endif()
endfunction()

# Headers that turn an include of a toolkit or an engine into an error with a sentence. Every
# target gets them in front of the system's folders; a backend folder names what it may include.
# ovi_traps(TARGET [ALLOW qt|sqlite|postgresql|expat ...])
function(ovi_traps target)
    cmake_parse_arguments(ARG "" "" "ALLOW" ${ARGN})
    foreach(kind qt sqlite postgresql expat)
        if(NOT kind IN_LIST ARG_ALLOW)
            target_include_directories(${target} BEFORE PRIVATE
                ${CMAKE_SOURCE_DIR}/cmake/traps/${kind})
        endif()
    endforeach()
endfunction()

# An object library of one folder: compiled once, linked into the shared library and, for tests of
# what is not exported, into a static one.
# ovi_folder(NAME SOURCES ... [LINK ...] [ALLOW ...])
function(ovi_folder name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK;ALLOW" ${ARGN})
    add_library(${name} OBJECT ${ARG_SOURCES})
    ovi_target(${name})
    ovi_traps(${name} ALLOW ${ARG_ALLOW})
    if(ARG_LINK)
        target_link_libraries(${name} PRIVATE ${ARG_LINK})
    endif()
endfunction()
