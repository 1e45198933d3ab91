# The required libraries; cmake/packages.txt lists their Debian packages.
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(Boost REQUIRED)
find_package(XercesC REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(EXPAT REQUIRED)
find_package(JPEG REQUIRED)
find_package(ZLIB REQUIRED)
find_package(PNG REQUIRED)
find_package(TIFF 4.5 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(GDK_PIXBUF REQUIRED IMPORTED_TARGET gdk-pixbuf-2.0)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
pkg_check_modules(MOUNT REQUIRED IMPORTED_TARGET mount)
pkg_check_modules(UDEV REQUIRED IMPORTED_TARGET libudev)
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)
pkg_check_modules(SQLITE3 REQUIRED IMPORTED_TARGET sqlite3)

# Public signatures use boost::shared_ptr.
set(SORVIK_PUBLIC_LIBRARIES Boost::boost)
set(SORVIK_LIBRARIES
    Boost::boost Threads::Threads ICU::uc EXPAT::EXPAT JPEG::JPEG ZLIB::ZLIB TIFF::TIFF
    nlohmann_json::nlohmann_json
    PkgConfig::GDK_PIXBUF PkgConfig::GIO PkgConfig::MOUNT PkgConfig::UDEV)
