# The libraries that rooms link, found once for all of them.
find_package(RapidJSON REQUIRED)
find_package(Threads REQUIRED)
if(APPLE AND NOT ICU_ROOT)
  # Homebrew keeps its ICU apart from the system's, whose headers are not public.
  execute_process(COMMAND brew --prefix icu4c OUTPUT_VARIABLE ICU_ROOT
    OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(PkgConfig REQUIRED)
pkg_check_modules(PSL REQUIRED IMPORTED_TARGET libpsl)
if(MARBELOT_BACKEND STREQUAL linux)
  find_package(Qt6 REQUIRED COMPONENTS Core Gui Widgets DBus Test)
  pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-xfixes)
  pkg_check_modules(ISAL REQUIRED IMPORTED_TARGET libisal)
  pkg_check_modules(LCMS REQUIRED IMPORTED_TARGET lcms2)
  pkg_check_modules(POPPLER REQUIRED IMPORTED_TARGET poppler-qt6)
  pkg_check_modules(HEIF REQUIRED IMPORTED_TARGET libheif)
endif()
