# What makes a mistake end the program before anybody can make use of it, and what keeps out what nobody needs.
# tests/binaries reads it back from what is built; docs/reliability.md says what it costs.

include_guard(GLOBAL)

add_compile_options(-fstack-protector-strong)
# The C library's checked forms of functions that write to buffers; they need an optimizing compiler.
add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
# Everything is bound at the start, after which the tables of addresses are read-only; nothing is both data and code.
add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack,-z,text)

# Functions that nobody calls stay out, and with them what they would have taken from the system. Sanitizers keep books
# of all functions.
add_compile_options(-ffunction-sections -fdata-sections)
if(NOT VELOTRINE_SANITIZE)
  add_link_options(-Wl,--gc-sections)
endif()
