# Who the instrument is, in the words of each format; name, version and description are the project's (CMakeLists.txt).
# Sessions find it by these: none but the version and the description may ever change.

include_guard(GLOBAL)

set(VELOTRINE_MAKER Marrowbeck)
set(VELOTRINE_LICENSE GPL-3.0-or-later)

# Audio unit
set(VELOTRINE_COMPONENT_TYPE kAudioUnitType_Generator)
set(VELOTRINE_COMPONENT_SUBTYPE VelI)
set(VELOTRINE_COMPONENT_MAKER "mb*k")

# CLAP, VST3 and bundles on macOS
set(VELOTRINE_BUNDLE_ID example.marrowbeck.velotrine)
set(VELOTRINE_CLAP_FEATURES instrument synthesizer stereo)
set(VELOTRINE_VST3_CATEGORIES Instrument Synth)
# JUCE makes the VST3 class's number of this and the component's subtype, and wants a capital letter in it.
set(VELOTRINE_JUCE_MAKER "Mb*k")

# LV2
set(VELOTRINE_LV2_URI https://marrowbeck.example/plugins/velotrine)
set(VELOTRINE_LV2_CLASS lv2:InstrumentPlugin)

# For C++: audiounit/Identity.h in the build folder.
string(REGEX REPLACE "^A " "a " VELOTRINE_DESCRIPTION_AFTER_A_COLON "${PROJECT_DESCRIPTION}")
list(JOIN VELOTRINE_CLAP_FEATURES "\", \"" VELOTRINE_CLAP_FEATURES_IN_CPP)
set(VELOTRINE_GENERATED "${PROJECT_BINARY_DIR}/generated")
configure_file("${PROJECT_SOURCE_DIR}/audiounit/Identity.h.in" "${VELOTRINE_GENERATED}/audiounit/Identity.h" @ONLY)
