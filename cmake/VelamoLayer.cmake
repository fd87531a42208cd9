# Every target of the project gets its language, warnings and arithmetic here, and nowhere else.
function(velamo_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(
        ${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON
                             CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    # Nobody puts functions of its own before the library's, so the compiler may inline those that callers see.
    # No fused multiply-add: where a rounding falls is part of the results. g++ 12 loses the rounding of two neighbouring
    # doubles to single precision and back when it makes vectors of straight code.
    # g++ 12 mistakes a literal followed by a text (`"\"" + name`) for an overlapping copy.
    target_compile_options(
        ${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -ffp-contract=off -fno-semantic-interposition
                          $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict$<SEMICOLON>-fno-tree-slp-vectorize>)
endfunction()

# What the library libvelamo holds. Whatever stands on it links the library, so that nothing is in a process twice.
set(VELAMO_LIBRARY_LAYERS system text plist graphics measure model analysis editing render formats export)

# velamo_linked(OUT layer...): the targets that stand for layers where they are linked from above the library.
function(velamo_linked out)
    set(targets "")
    foreach(layer IN LISTS ARGN)
        if(layer IN_LIST VELAMO_LIBRARY_LAYERS)
            list(APPEND targets velamo_library)
        else()
            list(APPEND targets velamo_${layer})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES targets)
    set(${out} ${targets} PARENT_SCOPE)
endfunction()

# velamo_layer(NAME SOURCES file... [BELOW layer...] [LIBRARIES target...])
# A folder as the static library velamo_NAME, which sees the layers named under BELOW. LIBRARIES stay private to it.
function(velamo_layer name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;BELOW;LIBRARIES")
    add_library(velamo_${name} STATIC ${ARG_SOURCES})
    velamo_compile_options(velamo_${name})
    if(VELAMO_FUZZ)
        # So the fuzzers learn which way each input took.
        target_compile_options(velamo_${name} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    target_include_directories(velamo_${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
    list(TRANSFORM ARG_BELOW PREPEND velamo_ OUTPUT_VARIABLE below)
    set(linked ${below})
    if(NOT name IN_LIST VELAMO_LIBRARY_LAYERS)
        velamo_linked(linked ${ARG_BELOW})
    endif()
    target_link_libraries(velamo_${name} PUBLIC ${linked} PRIVATE ${ARG_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY VELAMO_LAYERS velamo_${name})
    set_target_properties(velamo_${name} PROPERTIES VELAMO_BELOW "${below}")
    # That it needs nothing but what lies below it. A sanitizer's functions come with the program alone.
    if(VELAMO_TESTS AND NOT APPLE AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
        add_library(velamo_${name}_alone MODULE $<TARGET_OBJECTS:velamo_${name}>)
        target_link_libraries(velamo_${name}_alone PRIVATE ${linked} ${ARG_LIBRARIES})
        target_link_options(velamo_${name}_alone PRIVATE LINKER:-z,defs)
        set_target_properties(velamo_${name}_alone PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()

# velamo_program(TARGET SOURCES file... [LIBRARIES target...])
# Installed beside the others in bin/, it finds the library below whatever prefix.
function(velamo_program target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBRARIES")
    add_executable(${target} ${ARG_SOURCES})
    velamo_compile_options(${target})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
endfunction()
