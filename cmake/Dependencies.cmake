# Everything comes from the distribution's packages; script/setup installs them.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus)
find_package(nlohmann_json REQUIRED)

pkg_check_modules(XCB REQUIRED IMPORTED_TARGET
    xcb xcb-composite xcb-damage xcb-randr xcb-render xcb-shape xcb-shm xcb-xfixes xcb-xinput xcb-xkb)
pkg_check_modules(XCB_TEST REQUIRED IMPORTED_TARGET xcb-xtest)
pkg_check_modules(XKBCOMMON REQUIRED IMPORTED_TARGET xkbcommon xkbcommon-x11)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)

if(TARNWICK_TESTS)
    find_package(GTest REQUIRED)
    include(GoogleTest)
endif()
