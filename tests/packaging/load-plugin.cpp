// Loads a library as a host does, with all that it needs, and looks for its entry: load-plugin FILE SYMBOL.

#include <cstdio>

#include <dlfcn.h>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    void* const library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr || ::dlsym(library, argv[2]) == nullptr) {
        std::fprintf(stderr, "load-plugin: %s\n", ::dlerror());
        return 1;
    }
    return 0;
}
