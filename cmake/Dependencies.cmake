find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)
find_package(QCoro6 REQUIRED COMPONENTS Core)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(fmt 9 REQUIRED)
# The program is built without these; ctest reports an error when there are no tests.
find_package(GTest)
find_package(benchmark)

pkg_check_modules(FFmpeg REQUIRED IMPORTED_TARGET
    libavformat>=59 libavcodec>=59 libavutil>=57 libswresample>=4 libswscale>=6)
pkg_check_modules(Zimg REQUIRED IMPORTED_TARGET zimg>=3.0)
pkg_check_modules(Heif REQUIRED IMPORTED_TARGET libheif>=1.15)
pkg_check_modules(Fontconfig REQUIRED IMPORTED_TARGET fontconfig>=2.14)

# Coroutines of QCoro::Task are used throughout the editor.
qcoro_enable_coroutines()
