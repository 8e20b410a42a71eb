# Third-party packages, all from Debian 12 (scripts/install-deps.sh installs them).
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Network Test Concurrent Svg)
find_package(Qt5LinguistTools QUIET)
find_package(Boost 1.74 REQUIRED)
find_package(glog REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil libswscale)
find_package(Threads REQUIRED)
