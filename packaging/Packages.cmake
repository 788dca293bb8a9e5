# How cpack makes the packages. What a program links, dpkg-shlibdeps finds out; what it loads while it runs stands in
# packages.txt, and nowhere else.

# skyflare_packages_for(VARIABLE PURPOSE…): what packages.txt names for those purposes, as a control field has it.
function(skyflare_packages_for variable)
    set(list ${PROJECT_SOURCE_DIR}/packages.txt)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} lines)
    set(found)
    foreach(line IN LISTS lines)
        if(line MATCHES "^([a-z]+) +([^ ]+)$" AND CMAKE_MATCH_1 IN_LIST ARGN)
            list(APPEND found ${CMAKE_MATCH_2})
        endif()
    endforeach()
    if(NOT found)
        message(FATAL_ERROR "packages.txt names nothing for: ${ARGN}")
    endif()
    list(JOIN found ", " found)
    set(${variable} "${found}" PARENT_SCOPE)
endfunction()

file(STRINGS debian/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^skyflare \\(${PROJECT_VERSION}-([0-9]+)\\)")
    message(FATAL_ERROR "debian/changelog begins with another version than ${PROJECT_VERSION}: ${newest}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME skyflare)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Skyflare developers <developers@skyflare.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL app watch collector sdk)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE skyflare)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_APP_PACKAGE_NAME skyflare)
set(CPACK_DEBIAN_APP_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_APP_PACKAGE_SHLIBDEPS ON)
skyflare_packages_for(CPACK_DEBIAN_APP_PACKAGE_DEPENDS run app)
set(CPACK_DEBIAN_APP_DESCRIPTION "camera that photographs fireworks by itself
Point it at the sky: Skyflare watches the live picture frame by frame, and
when the light jumps from one frame to the next, a shell has burst, and it
takes a photo. You choose how small a jump counts and how many photos a
second it may take.
.
It runs on phones and on desktops, with any camera that v4l2, libcamera or
PipeWire shows, and has a simulated sky where there is none. Photos stay on
the machine.")

set(CPACK_DEBIAN_WATCH_PACKAGE_NAME skyflare-watch)
set(CPACK_DEBIAN_WATCH_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_WATCH_PACKAGE_SHLIBDEPS ON)
skyflare_packages_for(CPACK_DEBIAN_WATCH_PACKAGE_DEPENDS run)
set(CPACK_DEBIAN_WATCH_DESCRIPTION "camera that photographs fireworks, in the terminal
The camera of Skyflare without a window: for a small board, a server or a
script, and for films, which it goes through as fast as they can be decoded
and keeps a photo of every burst.")

set(CPACK_DEBIAN_COLLECTOR_PACKAGE_NAME skyflare-collector)
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_SECTION net)
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_SHLIBDEPS ON)
set(collector ${CMAKE_CURRENT_SOURCE_DIR}/debian/collector)
set(CPACK_DEBIAN_COLLECTOR_PACKAGE_CONTROL_EXTRA ${collector}/postinst ${collector}/prerm ${collector}/postrm)
set(CPACK_DEBIAN_COLLECTOR_DESCRIPTION "receiver for the measurements of Skyflare
Takes what installations of Skyflare send to the host that a deployer has
named for them, drops what has come before, and appends each event to a file
as one JSON object a line, for any log shipper to take from there.
.
It listens on the machine alone; a web server with TLS goes in front of it.
The service is installed, and neither enabled nor started.")

set(CPACK_DEBIAN_SDK_PACKAGE_NAME libskyflare-analytics-dev)
set(CPACK_DEBIAN_SDK_PACKAGE_SECTION libdevel)
skyflare_packages_for(CPACK_DEBIAN_SDK_PACKAGE_DEPENDS sdk)
set(CPACK_DEBIAN_SDK_DESCRIPTION "measurement engine of Skyflare for other programs
A library that records events in a database on the machine, counts sessions
and screens, and sends them to a collector, each once, through dead networks
and restarts. Without a host that is named to it, it opens no connection.
.
This package has the static library, its headers, the messages that it sends
(.proto), a CMake package, a pkg-config file and an example.")

include(CPack)
