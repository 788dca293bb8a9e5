# skyflare_gzipped(FILE NAME): NAME in the binary folder, FILE packed as Debian packs documents: no name, no time.
find_program(GZIP gzip REQUIRED)

function(skyflare_gzipped file name)
    get_filename_component(file ${file} ABSOLUTE)
    set(packed ${CMAKE_CURRENT_BINARY_DIR}/${name})
    add_custom_command(OUTPUT ${packed}
        COMMAND sh -c "\"$1\" -n9 <\"$2\" >\"$3\"" sh ${GZIP} ${file} ${packed}
        DEPENDS ${file} VERBATIM)
    string(MAKE_C_IDENTIFIER "packed ${name}" target)
    add_custom_target(${target} ALL DEPENDS ${packed})
endfunction()
