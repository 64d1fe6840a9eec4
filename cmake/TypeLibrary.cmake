# The component's type library as a resource of a program or dynamic library:
#
#   tarvo_type_library(<target>)
#
# It becomes resource 1 of the type TYPELIB, where the system and com/TypeInformation.h look for it. Where there are no
# type libraries this does nothing. Its file is the property TARVO_TYPE_LIBRARY of the target tarvo_interfaces.

function(tarvo_type_library target)
    get_target_property(library tarvo_interfaces TARVO_TYPE_LIBRARY)
    if(NOT library)
        return()
    endif()
    # Made elsewhere, which the property of a file says in one folder only.
    set_source_files_properties(${library} PROPERTIES GENERATED TRUE)
    tarvo_resources(${target} TYPELIB 1 ${library})
    add_dependencies(${target} tarvo_interfaces)
endfunction()
