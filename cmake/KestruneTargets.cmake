# Settings every Kestrune target shares: strict Qt string handling, warnings, sanitizers.

# Pass TEST_CODE for tests, whose data rows read better with plain string literals.
function(kestrune_configure_target target)
    cmake_parse_arguments(ARG "TEST_CODE" "" "" ${ARGN})
    if(NOT ARG_TEST_CODE)
        target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII)
    endif()
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_BYTEARRAY
        QT_NO_KEYWORDS
        QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
        QT_NO_URL_CAST_FROM_STRING)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
            # Designated initialisers leave the other members at their defaults on purpose.
            -Wno-missing-field-initializers)
    elseif(MSVC)
        target_compile_options(${target} PRIVATE /W4 /permissive-)
    endif()
endfunction()

if(KESTRUNE_BUILD_FUZZERS)
    # Coverage instrumentation everywhere; only the fuzz targets link libFuzzer's main.
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(KESTRUNE_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

# A logic library of one layer: static, QtCore only unless it says otherwise.
function(kestrune_add_library target)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}/..")
    target_link_libraries(${target} PUBLIC Qt6::Core ${ARG_DEPENDS})
    kestrune_configure_target(${target})
endfunction()
