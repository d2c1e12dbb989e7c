# SPDX-License-Identifier: MIT
# What every folder shares: the language level, the warnings, and one function for each kind of target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(QT_QML_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml")

find_program(ORVANETALK_CCACHE ccache)
if(ORVANETALK_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ORVANETALK_CCACHE}")
endif()

find_package(Qt6 6.4 REQUIRED COMPONENTS Core Qml)
find_package(OpenSSL 3 REQUIRED COMPONENTS Crypto)
find_package(ICU 70 REQUIRED COMPONENTS i18n uc)
if(NOT ORVANETALK_FUZZ)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Concurrent DBus Gui HttpServer Network Quick Sql Svg WebSockets)
    find_package(QCoro6 0.8 REQUIRED COMPONENTS Core Network)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBSECRET REQUIRED IMPORTED_TARGET libsecret-1)
    if(BUILD_TESTING OR ORVANETALK_BENCHMARKS)
        find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
    endif()
endif()

add_library(OrvaneTalkOptions INTERFACE)
target_compile_options(OrvaneTalkOptions INTERFACE
    -pthread -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
target_compile_definitions(OrvaneTalkOptions INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DEPRECATED_WARNINGS)

# Most of a compiler's time goes into the toolkit's headers, so they are read once for the programs and once for the
# tests. Neither may be compiled with a definition that one of its users lacks.
function(orvane_precompiled target)
    file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/${target}.cpp" CONTENT "")
    add_library(${target} STATIC "${CMAKE_BINARY_DIR}/${target}.cpp")
    set_target_properties(${target} PROPERTIES AUTOMOC OFF)
    target_link_libraries(${target} PRIVATE Qt6::Core OrvaneTalkOptions)
    foreach(library IN ITEMS Qt6::Network Qt6::Qml QCoro6::Core)
        target_include_directories(${target} SYSTEM PRIVATE
            $<TARGET_PROPERTY:${library},INTERFACE_INCLUDE_DIRECTORIES>)
    endforeach()
    target_precompile_headers(${target} PRIVATE ${ARGN})
endfunction()

if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT ORVANETALK_FUZZ)
    set(headers <QCoroTask> <QAbstractListModel> <QDateTime> <QDir> <QFile> <QHash> <QJsonArray> <QJsonDocument>
        <QJsonObject> <QNetworkReply> <QProperty> <QSet> <QStringList> <QTimer> <QUrl> <QtQml/qqmlregistration.h>
        <algorithm> <functional> <map> <memory> <optional> <ranges> <variant>)
    orvane_precompiled(OrvaneTalkHeaders ${headers})
    if(BUILD_TESTING)
        orvane_precompiled(OrvaneTalkTestHeaders ${headers})
        target_compile_options(OrvaneTalkTestHeaders PRIVATE -UQT_NO_CAST_FROM_ASCII)
    endif()
endif()

function(orvane_reuse_headers target from)
    if(TARGET ${from})
        target_precompile_headers(${target} REUSE_FROM ${from})
    endif()
endfunction()

function(orvane_common target)
    orvane_reuse_headers(${target} OrvaneTalkHeaders)
    target_link_libraries(${target} PRIVATE OrvaneTalkOptions)
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}/Sources")
endfunction()

# A folder without screens: orvane_library(Session SOURCES … LINK Platform Qt6::Core)
function(orvane_library target)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    qt_add_library(${target} STATIC ${ARG_SOURCES})
    target_link_libraries(${target} PUBLIC ${ARG_LINK})
    orvane_common(${target})
endfunction()

# A folder with screens or value types, as the static QML module OrvaneTalk.<target>.
function(orvane_module target)
    cmake_parse_arguments(ARG "" "" "SOURCES;QML;LINK" ${ARGN})
    # Where the linter finds the types of this module's properties: in each of ours that it links.
    set(known QtQuick)
    foreach(library IN LISTS ARG_LINK)
        get_target_property(uri ${library} QT_QML_MODULE_URI)
        if(uri MATCHES "^OrvaneTalk[.]")
            list(APPEND known ${uri})
        endif()
    endforeach()
    # A type is known by its file's name alone, whatever sub-folder it lies in.
    foreach(file IN LISTS ARG_QML)
        cmake_path(GET file FILENAME name)
        set_source_files_properties(${file} PROPERTIES QT_RESOURCE_ALIAS ${name})
    endforeach()
    set(folders)
    foreach(file IN LISTS ARG_SOURCES)
        cmake_path(GET file PARENT_PATH folder)
        list(APPEND folders "${CMAKE_CURRENT_SOURCE_DIR}/${folder}")
    endforeach()
    list(REMOVE_DUPLICATES folders)
    qt_add_library(${target} STATIC)
    qt_add_qml_module(${target}
        URI OrvaneTalk.${target}
        VERSION 1.0
        RESOURCE_PREFIX /
        SOURCES ${ARG_SOURCES}
        QML_FILES ${ARG_QML}
        DEPENDENCIES ${known})
    target_link_libraries(${target} PUBLIC ${ARG_LINK} Qt6::Qml)
    # What the QML compiler writes is not held to our warnings.
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "/(qmlcache|qmltyperegistrations)/|_qmltyperegistrations\\.cpp$")
    set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-w")
    # The generated registration includes the module's headers by their bare names.
    target_include_directories(${target} PRIVATE ${folders})
    orvane_common(${target})
endfunction()

# One QtTest executable and its ctest entry: orvane_test(tst_json SOURCES tst_json.cpp LINK Base)
function(orvane_test target)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;ENVIRONMENT;COMMAND" ${ARGN})
    qt_add_executable(${target} ${ARG_SOURCES})
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${target} PRIVATE ${ARG_LINK} Qt6::Test OrvaneTalkOptions)
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/Tests")
    # Tests are full of ASCII literals; the programs keep the conversions explicit.
    target_compile_options(${target} PRIVATE -UQT_NO_CAST_FROM_ASCII)
    orvane_reuse_headers(${target} OrvaneTalkTestHeaders)
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_test(NAME ${target} COMMAND ${ARG_COMMAND} $<TARGET_FILE:${target}>)
    set_tests_properties(${target} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_FORCE_STDERR_LOGGING=1;${ARG_ENVIRONMENT};TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:halt_on_error=1:die_after_fork=0:history_size=7;ASAN_OPTIONS=detect_leaks=1;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
endfunction()
