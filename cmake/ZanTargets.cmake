# How the targets of this project are made: the library, its adapter modules and its tests.

# Where programs, libraries and modules are built. The library looks for adapter modules in the
# folder `zanengine` beside itself, so the build tree works like an installed one.
set(ZAN_BINARY_DIR ${PROJECT_BINARY_DIR}/bin)
set(ZAN_LIBRARY_DIR ${PROJECT_BINARY_DIR}/lib)
set(ZAN_MODULE_DIR ${ZAN_LIBRARY_DIR}/zanengine)

find_package(Threads REQUIRED)

# Language level, warnings and sanitizers for every target of this project.
function(zan_house_rules target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        POSITION_INDEPENDENT_CODE ON
        RUNTIME_OUTPUT_DIRECTORY ${ZAN_BINARY_DIR})
    get_target_property(standard ${target} CXX_STANDARD)
    if(NOT standard)
        set_target_properties(${target} PROPERTIES CXX_STANDARD 20)
    endif()
    # Overriding one of several overloads is usual here, and GCC 12's -Wrestrict sees ghosts in
    # the standard string.
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
        -Wnon-virtual-dtor -Wcast-qual -Wno-overloaded-virtual
        $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
        $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
        $<$<BOOL:${ZAN_WARNINGS_AS_ERRORS}>:-Werror>)
    if(ZAN_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${ZAN_SANITIZE}
            -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
        target_link_options(${target} PRIVATE -fsanitize=${ZAN_SANITIZE})
    endif()
endfunction()

# Hidden visibility: only what is marked with ZAN_API leaves the target.
function(zan_hide_symbols target)
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# The target `zanengine`, also known as ZANEngine::ZANEngine; its folders add their files to it.
function(zan_add_engine_library)
    add_library(zanengine)
    add_library(ZANEngine::ZANEngine ALIAS zanengine)
    zan_house_rules(zanengine)
    zan_hide_symbols(zanengine)
    # Built the same way everywhere: what is measured is what is installed.
    set_target_properties(zanengine PROPERTIES
        UNITY_BUILD OFF
        EXPORT_NAME ZANEngine
        VERSION ${PROJECT_VERSION}
        SOVERSION ${ZAN_SONAME}
        LIBRARY_OUTPUT_DIRECTORY ${ZAN_LIBRARY_DIR}
        ARCHIVE_OUTPUT_DIRECTORY ${ZAN_LIBRARY_DIR})
    target_compile_features(zanengine PUBLIC cxx_std_17)
    # Calls inside the library are bound to the library, never looked up through the PLT.
    target_compile_options(zanengine PRIVATE -fno-semantic-interposition)
    target_link_options(zanengine PRIVATE LINKER:-Bsymbolic-functions)
    target_link_libraries(zanengine PUBLIC Threads::Threads PRIVATE ${CMAKE_DL_LIBS})
    target_compile_definitions(zanengine PRIVATE ZAN_BUILDING_LIBRARY=1)
    if(ZAN_ATOMIC_COUNTS)
        target_compile_definitions(zanengine PUBLIC ZAN_ATOMIC_COUNTS=1)
    endif()
    # Free lists would hide a use after free from AddressSanitizer. ThreadSanitizer has to see them:
    # they hand blocks from thread to thread.
    if(ZAN_POOLS AND NOT ZAN_SANITIZE MATCHES address)
        target_compile_definitions(zanengine PRIVATE ZAN_POOLS=1)
    endif()
endfunction()

# zan_library_part(HEADERS ... SOURCES ... [INTERNAL_HEADERS ...]): adds the files of the current
# folder to the library; HEADERS are installed.
function(zan_library_part)
    cmake_parse_arguments(PART "" "" "HEADERS;SOURCES" ${ARGN})
    list(TRANSFORM PART_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(TRANSFORM PART_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(zanengine PRIVATE ${PART_SOURCES})
    target_sources(zanengine PUBLIC FILE_SET HEADERS
        BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${PART_HEADERS})
endfunction()

# zan_adapter_module(<protocol> SOURCES ... [LIBRARIES ...]): the module that is found by the URL
# protocol <protocol>.
function(zan_adapter_module protocol)
    cmake_parse_arguments(MODULE "" "" "SOURCES;LIBRARIES" ${ARGN})
    set(target ${protocol}engineadapter)
    add_library(${target} MODULE ${MODULE_SOURCES})
    zan_house_rules(${target})
    zan_hide_symbols(${target})
    set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${ZAN_MODULE_DIR})
    target_link_libraries(${target} PRIVATE ZANEngine::ZANEngine ${MODULE_LIBRARIES})
endfunction()

# zan_program(<name> SOURCES ... [LIBRARIES ...]): a program built with the library.
function(zan_program name)
    cmake_parse_arguments(PROGRAM "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${PROGRAM_SOURCES})
    zan_house_rules(${name})
    target_link_libraries(${name} PRIVATE ZANEngine::ZANEngine ${PROGRAM_LIBRARIES})
endfunction()
