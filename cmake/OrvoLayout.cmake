# Where everything lies, below the prefix of an installation and below the build directory alike: the
# programs find each other, the modules and the handbook by the same relative paths in both, and a
# tree of either kind starts from wherever it is copied to.
include(GNUInstallDirs)
set(ORVO_MODULE_DIR "${CMAKE_INSTALL_LIBDIR}/orvo")
set(ORVO_PROGRAM_DIR "${CMAKE_INSTALL_LIBEXECDIR}/orvo") # programs that only ours start
set(ORVO_HANDBOOK_DIR "${CMAKE_INSTALL_DATADIR}/orvo/handbook")
set(ORVO_HEADER_DIR "${CMAKE_INSTALL_INCLUDEDIR}/orvo")
set(ORVO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/Orvo")

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_BINDIR}")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# orvo_relative(<result> <from> <to>): the way from one of these directories to another.
function(orvo_relative result from to)
  file(RELATIVE_PATH path "/prefix/${from}" "/prefix/${to}")
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

# What the client has to know, as seen from its own directory.
add_library(orvo_layout INTERFACE)
foreach(name MODULE PROGRAM HANDBOOK)
  orvo_relative(path "${CMAKE_INSTALL_BINDIR}" "${ORVO_${name}_DIR}")
  target_compile_definitions(orvo_layout INTERFACE "ORVO_${name}_PATH=\"${path}\"")
endforeach()

# orvo_install(<target> <directory> <component>): installs a program or a module; it finds our
# libraries from there. The libraries themselves are installed by orvo_install_library.
function(orvo_install target directory component)
  orvo_relative(path "${directory}" "${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${path}"
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${directory}"
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${directory}")
  install(TARGETS ${target} RUNTIME DESTINATION "${directory}" COMPONENT ${component}
    LIBRARY DESTINATION "${directory}" COMPONENT ${component})
endfunction()

# orvo_install_library(<target>): a library with the contract of modules, versioned; the number
# behind .so changes with the contract.
function(orvo_install_library target)
  set_target_properties(${target} PROPERTIES VERSION "${PROJECT_VERSION}"
    SOVERSION "${PROJECT_VERSION_MAJOR}" INSTALL_RPATH "$ORIGIN")
  target_include_directories(${target} INTERFACE "$<INSTALL_INTERFACE:${ORVO_HEADER_DIR}>")
  install(TARGETS ${target} EXPORT OrvoTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT libraries NAMELINK_COMPONENT dev)
endfunction()

# orvo_install_contract(): the headers that modules are written against, and find_package(Orvo).
function(orvo_install_contract)
  include(CMakePackageConfigHelpers)
  install(FILES frame/OrvoMdx.h frame/OrvoClient.h frame/CodePage.h frame/EventParameters.h frame/Launch.h frame/RecordText.h frame/RecordTextValidator.h frame/Text.h frame/UserCaption.h frame/Vocabulary.h frame/modules.h
    DESTINATION "${ORVO_HEADER_DIR}/frame" COMPONENT dev)
  install(EXPORT OrvoTargets NAMESPACE Orvo:: DESTINATION "${ORVO_PACKAGE_DIR}" COMPONENT dev)
  configure_package_config_file(cmake/OrvoConfig.cmake.in "${CMAKE_BINARY_DIR}/OrvoConfig.cmake"
    INSTALL_DESTINATION "${ORVO_PACKAGE_DIR}")
  write_basic_package_version_file("${CMAKE_BINARY_DIR}/OrvoConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${CMAKE_BINARY_DIR}/OrvoConfig.cmake" "${CMAKE_BINARY_DIR}/OrvoConfigVersion.cmake"
    DESTINATION "${ORVO_PACKAGE_DIR}" COMPONENT dev)
endfunction()
