# zanengine_add_adapter_module(<protocol> <source>...): the target <protocol>engineadapter, a module
# that the library finds by the protocol of a URL. Only what ZAN_ADAPTER_MODULE marks is exported.
# The module links the shared library: with a static one it would see a facade of its own.
function(zanengine_add_adapter_module protocol)
    set(target ${protocol}engineadapter)
    add_library(${target} MODULE ${ARGN})
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_link_libraries(${target} PRIVATE ZANEngine::ZANEngine)
endfunction()
