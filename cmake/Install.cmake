# Installs the headers under the paths that includes use, the static libraries, and a package config for find_package.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
