# Installing and packaging: `cmake --install` puts kestrune and kestrune-cli under a prefix (with the
# desktop entry, metainfo and icon on Linux); `cpack -G DEB` makes a Debian package of the same.
include(GNUInstallDirs)

set(KESTRUNE_APP_ID org.kestrune.Kestrune)
set(packaging "${PROJECT_SOURCE_DIR}/packaging")

if(APPLE)
    set(icon_name "${KESTRUNE_APP_ID}.icns")
    # The icon is drawn as SVG; it becomes an .icns only where the converters exist.
    find_program(RSVG_CONVERT rsvg-convert)
    find_program(ICONUTIL iconutil)
    if(RSVG_CONVERT AND ICONUTIL)
        set(iconset "${CMAKE_CURRENT_BINARY_DIR}/${KESTRUNE_APP_ID}.iconset")
        set(icns "${CMAKE_CURRENT_BINARY_DIR}/${icon_name}")
        set(sizes 16 32 64 128 256 512)
        set(commands "")
        foreach(size IN LISTS sizes)
            math(EXPR double "${size} * 2")
            list(APPEND commands
                COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} "${packaging}/linux/${KESTRUNE_APP_ID}.svg" -o "${iconset}/icon_${size}x${size}.png"
                COMMAND ${RSVG_CONVERT} -w ${double} -h ${double} "${packaging}/linux/${KESTRUNE_APP_ID}.svg" -o "${iconset}/icon_${size}x${size}@2x.png")
        endforeach()
        add_custom_command(OUTPUT "${icns}"
            COMMAND ${CMAKE_COMMAND} -E make_directory "${iconset}" ${commands}
            COMMAND ${ICONUTIL} -c icns "${iconset}" -o "${icns}"
            DEPENDS "${packaging}/linux/${KESTRUNE_APP_ID}.svg")
        target_sources(kestrune PRIVATE "${icns}")
        set_source_files_properties("${icns}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
    endif()
    set_target_properties(kestrune PROPERTIES
        MACOSX_BUNDLE TRUE
        MACOSX_BUNDLE_INFO_PLIST "${packaging}/macos/Info.plist.in"
        MACOSX_BUNDLE_GUI_IDENTIFIER ${KESTRUNE_APP_ID}
        MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION}
        MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}"
        MACOSX_BUNDLE_ICON_FILE ${icon_name})
elseif(WIN32)
    set_target_properties(kestrune PROPERTIES WIN32_EXECUTABLE TRUE)
endif()

install(TARGETS kestrune kestrune-cli
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    BUNDLE DESTINATION .)

if(UNIX AND NOT APPLE)
    install(FILES "${packaging}/linux/${KESTRUNE_APP_ID}.desktop" DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES "${packaging}/linux/${KESTRUNE_APP_ID}.metainfo.xml" DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
    install(FILES "${packaging}/linux/${KESTRUNE_APP_ID}.svg"
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
endif()

set(CPACK_PACKAGE_NAME kestrune)
set(CPACK_PACKAGE_VENDOR "The Kestrune contributors")
set(CPACK_PACKAGE_CONTACT "The Kestrune contributors <hello@kestrune.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${KESTRUNE_HOMEPAGE}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
# Shared libraries are found by dpkg-shlibdeps; the QML modules the window loads at run time are not,
# so they are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml6-module-qtquick, qml6-module-qtquick-controls, qml6-module-qtquick-layouts, qml6-module-qtquick-shapes, qml6-module-qtquick-templates, qml6-module-qtquick-window, qml6-module-qtqml-workerscript, qml6-module-qtqml-models, libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-inter, fonts-noto-color-emoji")
include(CPack)
