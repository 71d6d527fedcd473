// Preloaded into a program, lets one of its calls fail: NIFIKRAL_FAILING="write 3 28" is the third call of write, with
// errno 28; with a "+" behind the number all later ones fail too. Without it the calls are counted, and the counts
// written to the file NIFIKRAL_CALLS when the program ends.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

enum Call { callMalloc, callOpen, callRead, callWrite, callRename, callFsync, callCount };
constexpr const char* names[callCount] = {"malloc", "open", "read", "write", "rename", "fsync"};

std::atomic<long> counts[callCount];
int failing = -1, failure = 0;
long failsAt = 0;
bool stays = false, ready = false;

void Prepare() {
    if (const char* const wish = std::getenv("NIFIKRAL_FAILING")) {
        char name[16] = "", more = 0;
        if (std::sscanf(wish, "%15s %ld%c %d", name, &failsAt, &more, &failure) < 4) std::_Exit(99);
        stays = more == '+';
        for (int call = 0; call < callCount; ++call)
            if (std::strcmp(name, names[call]) == 0) failing = call;
    }
    // Those that the program starts are left alone.
    unsetenv("LD_PRELOAD");
    ready = true;
}

void Report() {
    const char* const path = std::getenv("NIFIKRAL_CALLS");
    if (!path || failing >= 0) return;
    ready = false;
    std::FILE* const file = std::fopen(path, "w");
    if (!file) return;
    for (int call = 0; call < callCount; ++call) std::fprintf(file, "%s %ld\n", names[call], counts[call].load());
    std::fclose(file);
}

bool Fails(Call call) {
    if (!ready) return false;
    const long number = ++counts[call];
    if (call != failing || number < failsAt || (number > failsAt && !stays)) return false;
    errno = failure;
    return true;
}

template <class Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

using Main = int (*)(int, char**, char**);
Main programsMain = nullptr;

// Nothing can be printed where the memory fails that a program has before its main function.
int MainThatFails(int count, char** words, char** environment) {
    Prepare();
    const int status = programsMain(count, words, environment);
    Report();
    return status;
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int count, char** words, void (*begin)(), void (*end)(), void (*last)(), void* stack) {
    programsMain = main;
    return Next<int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*)>("__libc_start_main")(
        MainThatFails, count, words, begin, end, last, stack);
}

void* malloc(std::size_t size) { return Fails(callMalloc) ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return Fails(callMalloc) ? nullptr : __libc_calloc(count, size); }
void* realloc(void* memory, std::size_t size) { return Fails(callMalloc) ? nullptr : __libc_realloc(memory, size); }
void* memalign(std::size_t alignment, std::size_t size) {
    return Fails(callMalloc) ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    if (Fails(callMalloc)) return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}

int open(const char* path, int flags, ...) {
    static const auto next = Next<int (*)(const char*, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const int mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return Fails(callOpen) ? -1 : next(path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return open(path, flags, mode);
}
ssize_t read(int file, void* bytes, std::size_t size) {
    static const auto next = Next<ssize_t (*)(int, void*, std::size_t)>("read");
    return Fails(callRead) ? -1 : next(file, bytes, size);
}
ssize_t write(int file, const void* bytes, std::size_t size) {
    static const auto next = Next<ssize_t (*)(int, const void*, std::size_t)>("write");
    return file > STDERR_FILENO && Fails(callWrite) ? -1 : next(file, bytes, size);
}
int rename(const char* from, const char* to) {
    static const auto next = Next<int (*)(const char*, const char*)>("rename");
    return Fails(callRename) ? -1 : next(from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    static const auto next = Next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    return Fails(callRename) ? -1 : next(fromFolder, from, toFolder, to, flags);
}
int fsync(int file) {
    static const auto next = Next<int (*)(int)>("fsync");
    return Fails(callFsync) ? -1 : next(file);
}
}
