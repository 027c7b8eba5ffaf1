# What makes a mistake end the program before anybody can make use of it. None of it costs anything measurable in the
# engine, whose loops write to no array on the stack: docs/reliability.md. tests/binaries reads it back from what is
# built. Not with sanitizers, which see more, and which some of it would blind.

include_guard(GLOBAL)

if(VELOTRINE_SANITIZE)
  return()
endif()

add_compile_options(-fstack-protector-strong)
# The C library's checked forms of functions that write to buffers; they need an optimizing compiler.
add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
# Everything is bound at the start, after which the tables of addresses are read-only; nothing is both data and code.
add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack,-z,text)
# Functions that nobody calls stay out, and with them what they would have taken from the system.
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--gc-sections)
