# skyflare_subsystem(NAME SOURCES … [USES …] [LIBRARIES …])
#
# One static library for one folder. USES names the subsystems whose headers it includes,
# LIBRARIES what its .cpp files alone need.
function(skyflare_subsystem name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES;LIBRARIES")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name}
        PUBLIC ${arg_USES}
        PRIVATE skyflare_build_flags ${arg_LIBRARIES})
endfunction()

# skyflare_test(NAME SOURCES … USES … [LIBRARIES …] [LABELS …])
#
# One doctest program, one CTest test. The label "gui" keeps it out of the tsan preset:
# GStreamer and Qt are not instrumented.
function(skyflare_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES;LIBRARIES;LABELS")
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE skyflare_build_flags tests_main ${arg_USES} ${arg_LIBRARIES})
    add_test(NAME ${name} COMMAND ${name})
    # Long enough for a sanitizer on a machine that does other things too: it is for what hangs.
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 LABELS "${arg_LABELS}")
    if(SKYFLARE_SANITIZE MATCHES address AND NOT arg_LABELS)
        # Little but our own code allocates there, and it keeps its frame pointers: the quick way to note each
        # allocation's stack does, and takes an eighth of the time.
        set_tests_properties(${name} PROPERTIES
            ENVIRONMENT_MODIFICATION "ASAN_OPTIONS=string_append::fast_unwind_on_malloc=1")
    endif()
endfunction()

# skyflare_qml_module(TARGET URI QML_FILES … [RESOURCES …] [IMPORTS …])
#
# The QML side of a subsystem: its files and its classes with QML_ELEMENT, as the module URI under qrc:/.
# IMPORTS names the modules of ours whose classes its classes speak of.
# A program that shows it links TARGETplugin beside TARGET.
function(skyflare_qml_module target uri)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "QML_FILES;RESOURCES;IMPORTS")
    string(REPLACE "." "/" path ${uri})
    # Where qmllint looks for a module of this name.
    set(output ${PROJECT_BINARY_DIR}/qml/${path})
    qt_add_qml_module(${target}
        URI ${uri} VERSION 1.0 DEPENDENCIES QtQuick ${arg_IMPORTS}
        RESOURCE_PREFIX / OUTPUT_DIRECTORY ${output} IMPORT_PATH ${PROJECT_BINARY_DIR}/qml
        QML_FILES ${arg_QML_FILES} RESOURCES ${arg_RESOURCES})
    # Qt's registration names our headers without their folder.
    target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    # What Qt generates is not held to our warnings, nor to our checks.
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "^${CMAKE_CURRENT_BINARY_DIR}/")
    set_source_files_properties(${sources} ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/mocs_compilation.cpp
        PROPERTIES COMPILE_OPTIONS -w)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/.clang-tidy "Checks: '-*,modernize-use-nullptr'\n")
endfunction()
