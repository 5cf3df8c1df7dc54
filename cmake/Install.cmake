# Installs the public headers (all but those in folders that hold internal ones) under the paths that includes use, the
# static libraries, the programs, and a package config for find_package(TarvoBase). The architecture test has the same
# list of folders.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(libraries platform kelva_db bren_network tarvobase bridge)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TarvoBase)

install(TARGETS ${libraries} EXPORT TarvoBaseTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/tarvobase)
foreach(folder ${libraries})
  install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarvobase/${folder}
    FILES_MATCHING PATTERN "*.h"
    PATTERN internal EXCLUDE PATTERN wire EXCLUDE PATTERN execution EXCLUDE PATTERN sql EXCLUDE PATTERN parsers EXCLUDE)
endforeach()
if(TARGET tarvo-host)
  install(TARGETS tarvo-host DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET tarvo-sandbox)
  install(TARGETS tarvo-sandbox DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT TarvoBaseTargets NAMESPACE TarvoBase:: DESTINATION ${package_folder})
configure_package_config_file(cmake/TarvoBaseConfig.cmake.in ${CMAKE_BINARY_DIR}/TarvoBaseConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TarvoBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TarvoBaseConfig.cmake ${CMAKE_BINARY_DIR}/TarvoBaseConfigVersion.cmake
  DESTINATION ${package_folder})
