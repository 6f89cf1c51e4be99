# What `cmake --install` puts where:
#   lib/                     liboviapi.so, liboviext.so, each with its SONAME and version
#   lib/cmake/oviext/        find_package(oviext): oviext::oviext, oviext::oviapi, oviext_resources()
#   include/oviext/          public headers by folder, as programs include them
#   share/oviext/            typical.rrs, for programs on the library
#   libexec/oviext/          the explorer beside its resources; bin/ has a link to it
#   share/                   desktop entry and icons
include(CMakePackageConfigHelpers)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/oviext)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/oviext)
set(data ${CMAKE_INSTALL_DATADIR}/oviext)
set(program ${CMAKE_INSTALL_LIBEXECDIR}/oviext)

# What a folder keeps to itself.
set(internal_dorcpp answer baretext bigvalue cursorstate driver errors execution keylist monitoring
    parameter piecebuffer positioned rowblock rowkeys rowsource secret session sessiondriver
    signalsblocked spool sqltext translate value worker)
set(internal_oviapi celledit cellfield liveobjects recordeditor resourcefile resourceformat)
set(internal_xmlutils codepage document limits)
set(internal_panels framelabel)
foreach(path platform/oviapi platform/dorcpp platform/xmlutils app data grids panels trend)
    get_filename_component(folder ${path} NAME)
    file(GLOB found CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${path}/*.h)
    foreach(stem IN LISTS internal_${folder})
        list(REMOVE_ITEM found ${CMAKE_SOURCE_DIR}/${path}/${stem}.h)
    endforeach()
    install(FILES ${found} DESTINATION ${headers}/${folder})
endforeach()

# Where what is installed finds the libraries, wherever the whole tree is moved to.
file(RELATIVE_PATH to_libraries
    ${CMAKE_INSTALL_FULL_LIBEXECDIR}/oviext ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(oviapi oviext PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(oviexplorer PROPERTIES INSTALL_RPATH "$ORIGIN/${to_libraries}")

install(TARGETS oviapi oviext EXPORT oviext
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${headers})
install(EXPORT oviext NAMESPACE oviext:: FILE oviextTargets.cmake DESTINATION ${package})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/oviextConfig.cmake.in
    ${CMAKE_BINARY_DIR}/oviextConfig.cmake
    INSTALL_DESTINATION ${package} PATH_VARS data)
# Below 1.0 a minor version may change the interface.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/oviextConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/oviextConfig.cmake ${CMAKE_BINARY_DIR}/oviextConfigVersion.cmake
    DESTINATION ${package})

# A program finds its resources beside itself; a link shares one file.
install(FILES ${CMAKE_BINARY_DIR}/bin/typical.rrs DESTINATION ${data})
install(TARGETS oviexplorer RUNTIME DESTINATION ${program})
file(RELATIVE_PATH to_resources ${CMAKE_INSTALL_FULL_LIBEXECDIR}/oviext
    ${CMAKE_INSTALL_FULL_DATADIR}/oviext/typical.rrs)
file(RELATIVE_PATH to_program ${CMAKE_INSTALL_FULL_BINDIR}
    ${CMAKE_INSTALL_FULL_LIBEXECDIR}/oviext/oviexplorer)
set(links ${CMAKE_BINARY_DIR}/links)
file(MAKE_DIRECTORY ${links})
file(CREATE_LINK ${to_resources} ${links}/typical.rrs SYMBOLIC)
file(CREATE_LINK ${to_program} ${links}/oviexplorer SYMBOLIC)
install(FILES ${links}/typical.rrs resources/gui_default_settings.xml DESTINATION ${program})
install(FILES ${links}/oviexplorer DESTINATION ${CMAKE_INSTALL_BINDIR})

install(FILES packaging/oviexplorer.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
foreach(picture 16=explorer16 32=explorer32 64=explorer64 128=explorer64@2x)
    string(REPLACE "=" ";" picture ${picture})
    list(GET picture 0 size)
    list(GET picture 1 file)
    install(FILES resources/pictures/${file}.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
        RENAME oviexplorer.png)
endforeach()
