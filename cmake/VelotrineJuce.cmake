# JUCE's modules, compiled once and shared by everything that has a window: velotrine_juce.

include_guard(GLOBAL)

# No other version: corrections are made to this one's source (cmake/JuceCorrections.cmake).
find_package(JUCE 7.0.5 EXACT CONFIG QUIET)
if(NOT JUCE_FOUND)
  message(FATAL_ERROR "JUCE 7.0.5 is not there, which the window and the plug-ins are made with (Debian: "
                      "juce-modules-source; elsewhere: -DJUCE_DIR=FOLDER; without: -DVELOTRINE_GUI=OFF). "
                      "See docs/building.md.")
endif()
include(JuceCorrections)
if(UNIX AND NOT APPLE)
  velotrine_correct_messages()
  velotrine_correct_x11()
  velotrine_correct_devices()
endif()

# VST3's C++ side and the modules below need these in every file that includes a JUCE header.
set(VELOTRINE_JUCE_DEFINITIONS
    JUCE_ALSA=1
    JUCE_JACK=1
    JUCE_DISPLAY_SPLASH_SCREEN=0
    JUCE_REPORT_APP_USAGE=0
    JUCE_MODAL_LOOPS_PERMITTED=0
    JUCE_STRICT_REFCOUNTEDPOINTER=1
    JUCE_USE_CURL=0
    JUCE_USE_FLAC=0
    JUCE_USE_OGGVORBIS=0
    JUCE_VST3_CAN_REPLACE_VST2=0
    JUCE_WEB_BROWSER=0)

if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 20)
  # A constructor template in juce_AudioPluginInstance.h has never been right, and nobody calls it. New compilers look at
  # it all the same unless told to wait for a call.
  add_compile_options(-fdelayed-template-parsing -Wno-delayed-template-parsing-in-cxx20)
endif()

add_library(velotrine_juce STATIC)
target_link_libraries(
  velotrine_juce PRIVATE juce::juce_audio_devices juce::juce_audio_processors juce::juce_gui_extra
                         juce::pkgconfig_JUCE_IMG_LINUX_DEPS)
target_compile_definitions(velotrine_juce PUBLIC JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1 ${VELOTRINE_JUCE_DEFINITIONS}
                                                 $<$<NOT:$<CONFIG:Debug>>:NDEBUG=1>)
target_compile_definitions(velotrine_juce INTERFACE $<TARGET_PROPERTY:velotrine_juce,COMPILE_DEFINITIONS>)
target_include_directories(velotrine_juce SYSTEM
                           INTERFACE $<TARGET_PROPERTY:velotrine_juce,INCLUDE_DIRECTORIES>)
# The modules are no hot path, and -O1 halves their compile time; but for the one that puts pixels on the screen.
target_compile_options(velotrine_juce PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O1>)
get_target_property(juce_graphics_sources juce::juce_graphics INTERFACE_SOURCES)
set_source_files_properties(${juce_graphics_sources} PROPERTIES COMPILE_OPTIONS "$<$<NOT:$<CONFIG:Debug>>:-O3>")
set_target_properties(velotrine_juce PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden)

# Reading JUCE's headers takes a compiler ten seconds a file. velotrine_editor compiles them once for all targets.
function(velotrine_compile_juce_headers owner)
  target_precompile_headers(${owner} PRIVATE <juce_audio_devices/juce_audio_devices.h>
                            <juce_audio_processors/juce_audio_processors.h> <juce_gui_basics/juce_gui_basics.h>)
endfunction()

# velotrine_use_juce_headers(TARGET): takes what velotrine_editor has compiled.
function(velotrine_use_juce_headers target)
  target_precompile_headers(${target} REUSE_FROM velotrine_editor)
  # A compiler takes them only with the options that they were compiled with, and programs would have -fPIE.
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_compile_options(${target} PRIVATE -fPIC)
endfunction()
