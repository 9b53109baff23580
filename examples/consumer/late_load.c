/* Loads the library after start-up, as a plug-in host does: everything it
   keeps per thread must fit what the loader can still give a late library. */
#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: late_load <path of libqkdynam.so>\n");
        return 2;
    }
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fprintf(stderr, "late load failed: %s\n", dlerror());
        return 1;
    }
    if (!dlsym(library, "NewVectorGuts")) {
        fprintf(stderr, "late load: NewVectorGuts is not exported\n");
        return 1;
    }
    puts("late load: passed");
    return dlclose(library);
}
