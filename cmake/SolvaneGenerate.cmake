# solvane_generate(): a stack build's sources out of a folder of definitions.
#
#   solvane_generate(TARGET name DB folder [OUTPUT folder] [RRC_SCHEMAS folder] [OPTIONS option...])
#
# RRC_SCHEMAS     a folder with the published modules lte-rrc.asn, nr-rrc.asn and umts-rrc.asn, or some of them: they
#                 stand for the ASN.1 files of their domains; record-sizes.tsv and nested-sizes.tsv beside them are
#                 asserted
#
# name            an object library of the generated sources, one of the parts of the plug-in
# <name>_headers  an interface library for code that includes the generated records
# <name>_run      the run of solvane-gen that both wait for
#
# The names of the outputs follow from the names of the definition files and are known when CMake runs.  A run
# writes only what changed, so that an edit of one definition rebuilds what depends on it and nothing else: the
# stamp tells that the run is up to date, the outputs keep their times.

include_guard(GLOBAL)

set(SOLVANE_DOMAINS infrastructure stack gsm umts signal lte ims nr)
set(SOLVANE_SCHEMA_DOMAINS lte nr umts)
set(SOLVANE_LTE_MODULES :EUTRA-RRC-Definitions) # the variables, side link and NB-IoT are no part of the stack

# The ASN.1 files of a domain.
function(solvane_schema_files db schemas domain files)
    set(published ${schemas}/${domain}-rrc.asn)
    if(schemas AND EXISTS ${published})
        set(${files} ${published} PARENT_SCOPE)
    else()
        file(GLOB own CONFIGURE_DEPENDS ${db}/${domain}/*.asn)
        set(${files} ${own} PARENT_SCOPE)
    endif()
endfunction()

# Stems of the units that the ASN.1 files of all domains become: as many a domain as the generator makes of so many
# octets, one for each 24 KiB.
function(solvane_schema_units db schemas stems)
    set(found "")
    foreach(domain IN LISTS SOLVANE_SCHEMA_DOMAINS)
        solvane_schema_files(${db} "${schemas}" ${domain} files)
        set(octets 0)
        foreach(file IN LISTS files)
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
            file(SIZE ${file} size)
            math(EXPR octets "${octets} + ${size}")
        endforeach()
        if(files)
            math(EXPR last "${octets} / 24576 + 1")
            foreach(part RANGE 1 ${last})
                if(part LESS 10)
                    set(part 0${part})
                endif()
                list(APPEND found ${domain}_rrc_${part})
            endforeach()
        endif()
    endforeach()
    set(${stems} ${found} PARENT_SCOPE)
endfunction()

# The outputs for the folder `db`, below `output`.
function(solvane_generated_files db schemas output sources headers)
    file(GLOB units CONFIGURE_DEPENDS ${db}/*/*.def)
    set(header_files "")
    set(source_files "")
    foreach(unit IN LISTS units)
        cmake_path(GET unit STEM LAST_ONLY stem)
        list(APPEND header_files ${output}/production/${stem}.h)
        # A unit has codecs when it has elements or messages; when it gets its first one, CMake has to look again.
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${unit})
        file(STRINGS ${unit} codecs REGEX "^(element|message) ")
        if(codecs)
            list(APPEND header_files ${output}/production/${stem}_codec.h)
            list(APPEND source_files ${output}/production/${stem}_pack.cpp ${output}/debug/tt_${stem}_rest.cpp)
        endif()
    endforeach()
    solvane_schema_units(${db} "${schemas}" schema_units)
    foreach(stem IN LISTS schema_units)
        list(APPEND header_files ${output}/production/${stem}.h ${output}/production/${stem}_codec.h)
        foreach(family IN ITEMS pack unpack print free)
            list(APPEND source_files ${output}/production/${stem}_${family}.cpp)
        endforeach()
    endforeach()
    foreach(domain IN LISTS SOLVANE_SCHEMA_DOMAINS)
        solvane_schema_files(${db} "${schemas}" ${domain} files)
        # The tables tell of no UMTS type.
        if(NOT domain STREQUAL umts AND files STREQUAL "${schemas}/${domain}-rrc.asn" AND
           EXISTS ${schemas}/record-sizes.tsv)
            list(APPEND source_files ${output}/production/${domain}_record_sizes.cpp)
        endif()
    endforeach()
    foreach(domain IN LISTS SOLVANE_DOMAINS)
        list(APPEND header_files ${output}/production/${domain}_tables.h)
        foreach(table IN ITEMS types structs layout messages values peers)
            list(APPEND source_files ${output}/production/${domain}_${table}.cpp)
        endforeach()
    endforeach()
    foreach(name IN ITEMS debug_info_records stack_build peer_rows tsc_db)
        list(APPEND source_files ${output}/production/${name}.cpp)
    endforeach()
    set(${sources} ${source_files} PARENT_SCOPE)
    set(${headers} ${header_files} PARENT_SCOPE)
endfunction()

# The options by which the generator takes published modules.
function(solvane_schema_options schemas options)
    set(found "")
    foreach(domain IN LISTS SOLVANE_SCHEMA_DOMAINS)
        if(schemas AND EXISTS ${schemas}/${domain}-rrc.asn)
            string(TOUPPER ${domain} upper)
            list(APPEND found --schema ${domain}=${schemas}/${domain}-rrc.asn${SOLVANE_${upper}_MODULES})
        endif()
    endforeach()
    foreach(table IN ITEMS record-sizes nested-sizes)
        if(found AND EXISTS ${schemas}/${table}.tsv)
            list(APPEND found --record-sizes ${schemas}/${table}.tsv)
        endif()
    endforeach()
    set(${options} ${found} PARENT_SCOPE)
endfunction()

# What the codecs of ASN.1 types are compiled with.  Decoding and encoding of LTE and NR are inlined for speed; UMTS,
# which has as many types as both together, is held small, and so is what prints and releases.
function(solvane_codec_options output stems)
    foreach(stem IN LISTS stems)
        if(NOT stem MATCHES "^umts")
            set_property(SOURCE ${output}/production/${stem}_pack.cpp ${output}/production/${stem}_unpack.cpp
                APPEND PROPERTY COMPILE_OPTIONS
                $<$<CONFIG:Release>:-O2> -fno-align-loops -fno-align-jumps -fno-align-labels)
        endif()
    endforeach()
endfunction()

# <output>/rrc_codecs.h, which declares the functions of all ASN.1 types, for tests and benchmarks.
function(solvane_codec_header output stems)
    set(text "// The codecs of all ASN.1 types.\n#pragma once\n\n")
    foreach(stem IN LISTS stems)
        string(APPEND text "#include \"production/${stem}_codec.h\"\n")
    endforeach()
    file(CONFIGURE OUTPUT ${output}/rrc_codecs.h CONTENT "${text}" @ONLY)
endfunction()

function(solvane_generate)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;DB;OUTPUT;RRC_SCHEMAS" "OPTIONS")
    if(NOT arg_TARGET OR NOT arg_DB)
        message(FATAL_ERROR "solvane_generate: TARGET and DB are wanted")
    endif()
    if(NOT arg_OUTPUT)
        set(arg_OUTPUT ${CMAKE_BINARY_DIR}/obj/gen)
    endif()
    cmake_path(ABSOLUTE_PATH arg_DB NORMALIZE)

    if(arg_RRC_SCHEMAS)
        cmake_path(ABSOLUTE_PATH arg_RRC_SCHEMAS NORMALIZE)
    endif()
    solvane_generated_files(${arg_DB} "${arg_RRC_SCHEMAS}" ${arg_OUTPUT} sources headers)
    # The depfile knows the files of the last run; this list knows a new one.
    file(GLOB inputs CONFIGURE_DEPENDS ${arg_DB}/*.def ${arg_DB}/*/*.def ${arg_DB}/*/*.val ${arg_DB}/*/*.tsv
         ${arg_DB}/*/*.asn)
    solvane_schema_options("${arg_RRC_SCHEMAS}" schema_options)
    set(stamp ${arg_OUTPUT}/${arg_TARGET}.stamp)
    add_custom_command(
        OUTPUT ${stamp}
        COMMAND solvane-gen --db ${arg_DB} --output ${arg_OUTPUT} --depfile ${stamp}.d --depfile-target ${stamp}
                ${schema_options} ${arg_OPTIONS}
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS solvane-gen ${inputs}
        DEPFILE ${stamp}.d
        COMMENT "Generating the stack build of ${arg_DB}"
        VERBATIM)
    # A step of its own, so that a fault in a definition is told under the name of the stamp and not behind a
    # list of all outputs.
    add_custom_command(
        OUTPUT ${sources} ${headers}
        COMMAND ${CMAKE_COMMAND} -E true
        DEPENDS ${stamp}
        COMMENT "Looking which generated sources changed"
        VERBATIM)
    add_custom_target(${arg_TARGET}_run DEPENDS ${sources} ${headers})

    add_library(${arg_TARGET}_headers INTERFACE)
    target_include_directories(${arg_TARGET}_headers INTERFACE ${arg_OUTPUT}/production ${arg_OUTPUT})
    add_dependencies(${arg_TARGET}_headers ${arg_TARGET}_run)

    add_library(${arg_TARGET} OBJECT ${sources})
    target_link_libraries(${arg_TARGET} PUBLIC solvane_runtime_flags ${arg_TARGET}_headers)
    solvane_schema_units(${arg_DB} "${arg_RRC_SCHEMAS}" codec_units)
    solvane_codec_options(${arg_OUTPUT} "${codec_units}")
    solvane_codec_header(${arg_OUTPUT} "${codec_units}")
    # Tables and one switch: what -Os saves is the padding between texts.
    target_compile_options(${arg_TARGET} PRIVATE $<$<CONFIG:Release>:-Os>)
    add_dependencies(${arg_TARGET} ${arg_TARGET}_run)
    set_property(GLOBAL APPEND PROPERTY SOLVANE_PARTS ${arg_TARGET})
endfunction()
