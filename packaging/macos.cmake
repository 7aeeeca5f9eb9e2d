# The application bundle; its icon is made from the window's pictures.
set(icns ${CMAKE_CURRENT_BINARY_DIR}/prjdup.icns)
set(iconset ${CMAKE_CURRENT_BINARY_DIR}/prjdup.iconset)
set(png ${PROJECT_SOURCE_DIR}/app/icon/ZUVY)
foreach(size 16 32 128 256)
    math(EXPR double "2 * ${size}")
    configure_file(${png}_${size}x${size}.png ${iconset}/icon_${size}x${size}.png COPYONLY)
    configure_file(${png}_${double}x${double}.png ${iconset}/icon_${size}x${size}@2x.png COPYONLY)
endforeach()
configure_file(${png}_512x512.png ${iconset}/icon_512x512.png COPYONLY)
file(GLOB pictures ${iconset}/*.png)
add_custom_command(
    OUTPUT ${icns}
    COMMAND iconutil --convert icns --output ${icns} ${iconset}
    DEPENDS ${pictures}
    VERBATIM)
target_sources(prjdup PRIVATE ${icns})
set_source_files_properties(${icns} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
set_target_properties(prjdup PROPERTIES
    MACOSX_BUNDLE_BUNDLE_NAME "Copy Project"
    MACOSX_BUNDLE_COPYRIGHT "Copyright 2026 ZUVY"
    MACOSX_BUNDLE_GUI_IDENTIFIER com.zuvy.prjdup
    MACOSX_BUNDLE_ICON_FILE prjdup.icns
    MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
    MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION})
