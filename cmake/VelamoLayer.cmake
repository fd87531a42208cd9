# Every target of the project gets its language, warnings and arithmetic here, and nowhere else.
function(velamo_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
    # No fused multiply-add: where a rounding falls is part of the results. g++ 12 loses the rounding of two neighbouring
    # doubles to single precision and back when it makes vectors of straight code.
    # g++ 12 mistakes a literal followed by a text (`"\"" + name`) for an overlapping copy.
    target_compile_options(
        ${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -ffp-contract=off
                          $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict$<SEMICOLON>-fno-tree-slp-vectorize>)
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
    list(TRANSFORM ARG_BELOW PREPEND velamo_)
    target_link_libraries(velamo_${name} PUBLIC ${ARG_BELOW} PRIVATE ${ARG_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY VELAMO_LAYERS velamo_${name})
    set_target_properties(velamo_${name} PROPERTIES VELAMO_BELOW "${ARG_BELOW}")
    # That it needs nothing but what lies below it. A sanitizer's functions come with the program alone.
    if(VELAMO_TESTS AND NOT APPLE AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
        add_library(velamo_${name}_alone MODULE $<TARGET_OBJECTS:velamo_${name}>)
        target_link_libraries(velamo_${name}_alone PRIVATE ${ARG_BELOW} ${ARG_LIBRARIES})
        target_link_options(velamo_${name}_alone PRIVATE LINKER:-z,defs)
        set_target_properties(velamo_${name}_alone PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()

# velamo_program(TARGET SOURCES file... [LIBRARIES target...])
function(velamo_program target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBRARIES")
    add_executable(${target} ${ARG_SOURCES})
    velamo_compile_options(${target})
    target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
endfunction()
