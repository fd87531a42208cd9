# Puts the libraries that a bundle's module needs, and that do not come with the system, into the bundle, and lets
# module and libraries look for them there alone: the bundle works on Macs that have none of them.
#     cmake -Dbundle=FOLDER -Dinstall_name_tool=TOOL -Dotool=TOOL [-Dcodesign=TOOL] -P carry_libraries.cmake
cmake_minimum_required(VERSION 3.25)
set(module ${bundle}/Contents/MacOS/Velamo)
set(frameworks ${bundle}/Contents/Frameworks)

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# look_beside(BINARY FOLDER NAME...)
# Lets the binary take the libraries of these names from the folder, which it knows by its own place, and no library
# from folders of the machine that built it.
function(look_beside binary folder)
    execute_process(COMMAND ${otool} -l ${binary} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
    set(changes "")
    string(REGEX MATCHALL " (name|path) [^\n]+ \\(offset [0-9]+\\)" lines "${listing}")
    list(REMOVE_DUPLICATES lines)  # a binary for several processors has them for each
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^ (name|path) (.+) \\(offset [0-9]+\\)$" "\\2" path "${line}")
        cmake_path(GET path FILENAME name)
        if(line MATCHES "^ path")
            list(APPEND changes -delete_rpath ${path})
        elseif(name IN_LIST ARGN)
            list(APPEND changes -change ${path} ${folder}/${name})
        endif()
    endforeach()
    if(changes)
        run(${install_name_tool} ${changes} ${binary})
    endif()
endfunction()

# The system's own libraries need not even be files.
file(GET_RUNTIME_DEPENDENCIES MODULES ${module} RESOLVED_DEPENDENCIES_VAR libraries
     PRE_EXCLUDE_REGEXES "^/usr/lib/" "^/System/")
set(names "")
foreach(library IN LISTS libraries)
    cmake_path(GET library FILENAME name)
    list(APPEND names ${name})
    file(REAL_PATH ${library} file)
    file(MAKE_DIRECTORY ${frameworks})
    file(COPY_FILE ${file} ${frameworks}/${name})
    file(CHMOD ${frameworks}/${name} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()

look_beside(${module} @loader_path/../Frameworks ${names})
foreach(name IN LISTS names)
    run(${install_name_tool} -id @rpath/${name} ${frameworks}/${name})
    look_beside(${frameworks}/${name} @loader_path ${names})
endforeach()

# What was changed is no longer what was signed, and the system loads no such code. A release is signed once more, by
# name.
if(codesign)
    list(TRANSFORM names PREPEND ${frameworks}/)
    foreach(binary IN LISTS names bundle)
        run(${codesign} --force --sign - ${binary})
    endforeach()
endif()
