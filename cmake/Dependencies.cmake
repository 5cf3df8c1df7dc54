# Libraries of the distribution. Heavy ones stay behind our own headers, so a consumer links them without including them.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(CURL REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
pkg_check_modules(SQLCIPHER REQUIRED IMPORTED_TARGET GLOBAL sqlcipher)
pkg_check_modules(SIMDJSON REQUIRED IMPORTED_TARGET GLOBAL simdjson)
