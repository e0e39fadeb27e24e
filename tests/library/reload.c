/* Loads and unloads the library 1,000 times: nothing may be left behind. */
#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier): dlopen, mallinfo2 */
#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static long residentPages(void) {
  long size = 0, resident = 0;
  FILE* file = fopen("/proc/self/statm", "r");
  if (file == NULL) return -1;
  if (fscanf(file, "%ld %ld", &size, &resident) != 2) resident = -1;
  fclose(file);
  return resident;
}

int main(int argc, char** argv) {
  size_t heap = 0;
  long pages = 0;
  if (argc != 2) return 2;
  for (int i = 0; i < 1000; ++i) {
    typedef const char* (*Text)(int);
    Text text = NULL;
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
      fprintf(stderr, "%s\n", dlerror());
      return 1;
    }
    *(void**)&text = dlsym(library, "GetAnalysisErrorString");
    if (text == NULL || strcmp(text(0), "No error") != 0 || dlclose(library) != 0) return 1;
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL) {
      fprintf(stderr, "still loaded after dlclose\n");
      return 1;
    }
    if (i == 20) { /* the loader's own tables have settled */
      heap = mallinfo2().uordblks;
      pages = residentPages();
    }
  }
  /* Room for the caches of allocator and loader: less than any leak of 980 loads. */
  if (mallinfo2().uordblks > heap + 4096 || residentPages() > pages + 98) {
    fprintf(stderr, "heap %zu -> %zu bytes, resident %ld -> %ld pages\n", heap,
            mallinfo2().uordblks, pages, residentPages());
    return 1;
  }
  return 0;
}
