# Puts beside the installed program what it needs of Qt, and what Qt needs, so that it runs without
# the system's Qt. The caller names the built `program`, the `document` and Qt's tools `qtpaths` and
# `qmlimportscanner`.
set(folder ${CMAKE_INSTALL_PREFIX}/lib/prjdup)
set(licenses ${CMAKE_INSTALL_PREFIX}/share/doc/prjdup/licenses)

# Sets `output` to what a command prints.
function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    set(output "${output}" PARENT_SCOPE)
endfunction()

run(${qtpaths} --query QT_INSTALL_PLUGINS)
set(plugins ${output})
run(${qtpaths} --query QT_INSTALL_QML)
set(qml ${output})

# The program's own folder, so that no other program finds these libraries or reads this qt.conf.
file(MAKE_DIRECTORY ${folder})
file(RENAME ${CMAKE_INSTALL_PREFIX}/bin/prjdup ${folder}/prjdup)
file(CREATE_LINK ../lib/prjdup/prjdup ${CMAKE_INSTALL_PREFIX}/bin/prjdup SYMBOLIC)
file(WRITE ${folder}/qt.conf "[Paths]\nPlugins = plugins\nQmlImports = qml\n")

# Pictures need no plug-in, as all are PNG. The window draws its own title bar on Wayland, where some
# desktops draw none. The platform "wayland-egl" is left out, as it is used only on request.
set(modules)
foreach(pattern
        platforminputcontexts/libcomposeplatforminputcontextplugin.so
        platforminputcontexts/libibusplatforminputcontextplugin.so
        platforms/libqwayland*.so
        platforms/libqxcb.so
        wayland-decoration-client/libbradient.so
        wayland-graphics-integration-client/libqt-plugin-wayland-egl.so
        wayland-shell-integration/libxdg-shell.so
        xcbglintegrations/libqxcb-*.so)
    file(GLOB found ${plugins}/${pattern})
    list(FILTER found EXCLUDE REGEX /libqwayland-egl)
    if(NOT found)
        message(FATAL_ERROR "Qt has no ${plugins}/${pattern}.")
    endif()
    cmake_path(GET pattern PARENT_PATH type)
    file(INSTALL ${found} DESTINATION ${folder}/plugins/${type})
    list(APPEND modules ${found})
endforeach()

# The modules that the document imports, directly or not, except those built into Qt's libraries, the
# styles that the program does not set, and the shapes that only these styles draw. A module's QML
# files are compiled into its plug-in.
set(unused "^(QtQml|QtQuick|QtQuick/Shapes|QtQuick/Controls/[A-Z].*)$")
run(${qmlimportscanner} -qmlFiles ${document} -importPath ${qml})
set(imports ${output})
string(JSON count LENGTH ${imports})
math(EXPR last "${count} - 1")
foreach(index RANGE ${last})
    string(JSON module ERROR_VARIABLE builtin GET ${imports} ${index} relativePath)
    if(builtin OR (module MATCHES ${unused} AND NOT module MATCHES /Basic))
        continue()
    endif()
    file(GLOB plugin ${qml}/${module}/*.so)
    file(INSTALL ${qml}/${module}/qmldir ${plugin} DESTINATION ${folder}/qml/${module})
    list(APPEND modules ${plugin})
endforeach()

# libxkbcommon-x11 looks into what libxkbcommon makes, so both must be of one version.
file(GET_RUNTIME_DEPENDENCIES EXECUTABLES ${program} MODULES ${modules}
    RESOLVED_DEPENDENCIES_VAR libraries
    PRE_EXCLUDE_REGEXES ^ld-linux "^lib(c|m|dl|rt|pthread|resolv|gcc_s|stdc\\+\\+)\\.so"
        "^lib(X11|X11-xcb|xcb)\\.so" ^libwayland- "^lib(GL|GLX|OpenGL|EGL)\\.so" ^libxkbcommon
        "^lib(fontconfig|freetype|dbus-1)\\.so")
foreach(library ${libraries})
    cmake_path(GET library FILENAME name)
    file(COPY_FILE ${library} ${folder}/${name})
endforeach()

# A run path of the older kind also serves the libraries and plug-ins, and what they load. Its second
# folder is for ldd and the like, which do not follow the link.
file(GLOB_RECURSE binaries ${folder}/*.so*)
run(strip --strip-unneeded ${folder}/prjdup ${binaries})
run(patchelf --remove-rpath ${binaries})
run(patchelf --force-rpath --set-rpath $ORIGIN:$ORIGIN/../lib/prjdup ${folder}/prjdup)

# The notices, from the packages that the libraries come from; some packages name files without /usr.
# A Qt that comes from no package, and brings its own ICU, has its notices in packaging/licenses.
list(TRANSFORM libraries REPLACE "^/usr/" "/")
list(TRANSFORM libraries PREPEND "*")
execute_process(COMMAND dpkg-query --search ${libraries}
    OUTPUT_VARIABLE packages ERROR_VARIABLE unknown)
string(REGEX REPLACE "[^\n]*/lib(Qt6|icu)[^\n]*\n" "" unknown "${unknown}")
if(unknown)
    message(FATAL_ERROR ${unknown})
endif()
string(REGEX MATCHALL "\n[^ :]+:" packages "\n${packages}")
list(TRANSFORM packages REPLACE "[\n:]" "")
run(dpkg-query --show "--showformat=\${source:Package} \${Package}\n" ${packages})
string(REPLACE "\n" ";" packages "${output}")
foreach(package ${packages})
    string(REPLACE " " ";" package ${package})
    list(POP_FRONT package source)
    file(COPY_FILE /usr/share/doc/${package}/copyright ${licenses}/${source}.txt)
endforeach()
file(INSTALL /usr/share/common-licenses DESTINATION ${licenses})
