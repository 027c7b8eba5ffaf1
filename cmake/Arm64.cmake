# Builds for 64-bit ARM on another Debian machine: its cross compiler, its libraries of that architecture, and qemu for
# programs that run during the build or are tests (scripts/install-packages arm64).

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(triplet aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)

# Debian puts the libraries of all architectures below the same root.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/${triplet}/pkgconfig:/usr/share/pkgconfig)

# JUCE is sources, and a program that runs during the build: those of this machine.
file(GLOB JUCE_DIR "/usr/lib/*/cmake/JUCE-7.0.5")
