# The shader programs, as resources of the program or module that draws with them:
#
#   tarvo_embed_shaders(<target>)
#
# Types and ids are those of render/ShaderProgram.h. The bytecode is committed; Resources/Shaders/compile remakes it.

function(tarvo_embed_shaders target)
    set(resources)
    foreach(program IN ITEMS
            "PS 214 PixelShaderDewarping"
            "PS 216 PanoramaWallPS"
            "PS 217 PanoramaCeilingPS"
            "PS 218 PanoramaDeskPS"
            "PS 220 CustomTransformPS"
            "PS 222 CustomTransformPanoramaVirtualPtzPS"
            "PS 223 YV12PS"
            "PS 224 YUY2PS"
            "PS 225 ExcludeRegionPS"
            "VS 227 VertexShader"
            "PS 228 OverviewRegionPS"
            "PS 229 DefaultPS")
        separate_arguments(words UNIX_COMMAND "${program}")
        list(POP_BACK words name)
        list(APPEND resources ${words} ${PROJECT_SOURCE_DIR}/Resources/Shaders/bytecode/${name}.cso)
    endforeach()
    tarvo_resources(${target} ${resources})
endfunction()
