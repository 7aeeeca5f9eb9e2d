# Included by project(): lets the Qt of this system stand in for that of another one, which is good
# for compiling, not for linking.
foreach(library WrapOpenGL WrapVulkanHeaders)
    add_library(${library}::${library} INTERFACE IMPORTED)
endforeach()

# Windows links import libraries, so each library must name one.
function(name_import_libraries)
    get_directory_property(libraries IMPORTED_TARGETS)
    set_target_properties(${libraries} PROPERTIES IMPORTED_IMPLIB ${CMAKE_CURRENT_FUNCTION_LIST_FILE})
endfunction()
cmake_language(DEFER CALL name_import_libraries)
