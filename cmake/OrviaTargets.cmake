# What every target of this project shares: warnings, sanitizers, strict Qt strings and one precompiled header.
add_library(orvia_options INTERFACE)
target_compile_options(orvia_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -fno-omit-frame-pointer
    $<$<BOOL:${ORVIA_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(orvia_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_JAVA_STYLE_ITERATORS QT_STRICT_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(orvia_options INTERFACE ${CMAKE_SOURCE_DIR}/Sources)
if(ORVIA_SANITIZERS)
    target_compile_options(orvia_options INTERFACE -fsanitize=${ORVIA_SANITIZERS} -fno-sanitize-recover=all)
    target_link_options(orvia_options INTERFACE -fsanitize=${ORVIA_SANITIZERS})
endif()
if(ORVIA_FUZZING)
    # Tells the fuzzer which branches an input took; its main function joins the targets of Tests/Fuzzing only.
    target_compile_options(orvia_options INTERFACE -fsanitize=fuzzer-no-link
        -fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/Tests/Fuzzing/ignorelist.txt)
endif()

# Compiles the Qt headers that almost every file includes once per kind of target.
function(orvia_precompile target)
    target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/${ARGV1})
endfunction()
