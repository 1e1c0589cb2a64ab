# SPDX-License-Identifier: MIT
# The targets analyze-cppcheck, analyze-tidy, and analyze, which is both. Any finding fails them.
include(ProcessorCount)
ProcessorCount(QUILLARY_PROCESSORS)
if(QUILLARY_PROCESSORS EQUAL 0)
    set(QUILLARY_PROCESSORS 1)
endif()

set(QUILLARY_SOURCE_FOLDERS app base benchmarks cli codec demo fuzz model persist search tests transfer verify widgets)

# quillary_missing_tool(TARGET PACKAGE): TARGET says what to install, and fails.
function(quillary_missing_tool target package)
    add_custom_target(${target}
        COMMAND ${CMAKE_COMMAND} -E echo "${target}: ${package} is missing. On Debian: apt-get install ${package}, then run cmake again."
        COMMAND ${CMAKE_COMMAND} -E false
        VERBATIM)
endfunction()

# Cppcheck knows Qt by its own description of it, so that it needs neither Qt's headers nor generated sources, and takes seconds.
find_program(QUILLARY_CPPCHECK cppcheck)
mark_as_advanced(QUILLARY_CPPCHECK)
if(QUILLARY_CPPCHECK)
    set(QUILLARY_CPPCHECK_COMMAND ${CMAKE_COMMAND} -E chdir ${Quillary_SOURCE_DIR} ${QUILLARY_CPPCHECK} ${QUILLARY_SOURCE_FOLDERS}
        -I . -I tests --std=c++17 --language=c++ --library=qt --enable=warning,style,performance,portability --inline-suppr
        --suppressions-list=cmake/cppcheck-suppressions.txt --cppcheck-build-dir=${Quillary_BINARY_DIR}/cppcheck
        --error-exitcode=1 --quiet -j ${QUILLARY_PROCESSORS} "--template={file}:{line}: {severity}: {message} [{id}]")
    file(MAKE_DIRECTORY ${Quillary_BINARY_DIR}/cppcheck)
    add_custom_target(analyze-cppcheck COMMAND ${QUILLARY_CPPCHECK_COMMAND} COMMENT "cppcheck" USES_TERMINAL VERBATIM)
else()
    quillary_missing_tool(analyze-cppcheck cppcheck)
endif()

# Clang-tidy reads each source as it is compiled, so what moc generates has to be there; the findings in it are not ours to mend.
# It takes minutes for the program alone; tests, fuzzers and benchmarks are left to cppcheck and to the warnings of the compiler.
# The standard is named because CMake leaves it out where it is the compiler's default, which need not be clang's.
find_program(QUILLARY_CLANG_TIDY clang-tidy)
find_program(QUILLARY_RUN_CLANG_TIDY run-clang-tidy)
mark_as_advanced(QUILLARY_CLANG_TIDY QUILLARY_RUN_CLANG_TIDY)
if(QUILLARY_CLANG_TIDY AND QUILLARY_RUN_CLANG_TIDY)
    set(folders ${QUILLARY_SOURCE_FOLDERS})
    list(REMOVE_ITEM folders benchmarks fuzz tests)
    string(REPLACE ";" "|" folders "${folders}")
    set(ours "^${Quillary_SOURCE_DIR}/(${folders})/")
    add_custom_target(analyze-tidy
        COMMAND ${QUILLARY_RUN_CLANG_TIDY} -clang-tidy-binary ${QUILLARY_CLANG_TIDY} -p ${Quillary_BINARY_DIR} -quiet
                -j ${QUILLARY_PROCESSORS} -extra-arg-before=-std=c++17 -header-filter ${ours} "${ours}"
        COMMENT "clang-tidy" USES_TERMINAL VERBATIM)
    get_property(targets GLOBAL PROPERTY QUILLARY_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(automoc ${target} AUTOMOC)
        if(automoc)
            add_dependencies(analyze-tidy ${target}_autogen)
        endif()
    endforeach()
else()
    quillary_missing_tool(analyze-tidy clang-tidy)
endif()

add_custom_target(analyze)
add_dependencies(analyze analyze-cppcheck analyze-tidy)
