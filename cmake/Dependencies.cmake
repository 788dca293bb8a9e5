# Every library that Skyflare links, found once. packages.txt names the Debian package of each.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(CURL 7.85 REQUIRED)
find_package(JPEG REQUIRED)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(SQLite3 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(ICU REQUIRED COMPONENTS i18n uc)
find_package(nlohmann_json REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui Network Qml Quick Svg)

pkg_check_modules(plist REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(spng REQUIRED IMPORTED_TARGET spng)
pkg_check_modules(hwy REQUIRED IMPORTED_TARGET libhwy)
pkg_check_modules(isal REQUIRED IMPORTED_TARGET libisal)
pkg_check_modules(exiv2 REQUIRED IMPORTED_TARGET exiv2)
pkg_check_modules(glib REQUIRED IMPORTED_TARGET gio-2.0 gio-unix-2.0)
pkg_check_modules(microhttpd REQUIRED IMPORTED_TARGET libmicrohttpd)
pkg_check_modules(gstreamer REQUIRED IMPORTED_TARGET
    gstreamer-1.0 gstreamer-app-1.0 gstreamer-video-1.0 gstreamer-pbutils-1.0)

# Standalone Asio is headers alone; Debian ships no CMake or pkg-config file for it.
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
add_library(asio INTERFACE)
target_include_directories(asio SYSTEM INTERFACE ${ASIO_INCLUDE_DIR})
target_compile_definitions(asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(asio INTERFACE Threads::Threads)
# The thread sanitizer does not know fences; Asio's own locks order what we do with it.
if(SKYFLARE_SANITIZE MATCHES thread)
    target_compile_definitions(asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
endif()
