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
endfunction()
