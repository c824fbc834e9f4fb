/* A host written in C that loads the library, lets it go and loads it again. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include "bindings/entry_points.h"

static void (*entry(void* library, const char* name))(void) {
    void (*function)(void) = NULL;
    *(void**)&function = dlsym(library, name);
    if (function == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(EXIT_FAILURE);
    }
    return function;
}

int main(int count, char** arguments) {
    for (int i = 0; i < 3 && count > 1; ++i) {
        void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
        if (library == NULL) {
            fprintf(stderr, "%s\n", dlerror());
            return EXIT_FAILURE;
        }
        entry(library, "OXInitialize_ks_hmi_foundation")();
        entry(library, "OXTerminate_ks_hmi_foundation")();
        dlclose(library);
    }
    puts("a host in C works");
    return EXIT_SUCCESS;
}
