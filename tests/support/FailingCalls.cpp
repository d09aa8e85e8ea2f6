// Loaded before a program's libraries: lets one call of it fail, to see what the program makes of that.
//
//   FAILING_PROGRAM=name    the program that is meant; others go on undisturbed
//   FAILING_CALL=kind:N     the N-th call of that kind fails, counted from 1; 0 for none
//   FAILING_COUNTS=file     32-bit counts of the calls, in the order of the kinds below; the file must be long enough
//
// It sees calls through the dynamic linker only, so not those that the C library makes within itself. Event descriptors
// count as pipes and random numbers as reads, where the program itself asks for them: its libraries end it without.

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum Kind { Open, Read, Write, MakeFolder, Unlink, Rename, Fork, Pipe, Socket, Thread, Kinds };

constexpr const char* names[Kinds] = {"open",   "read", "write", "mkdir",  "unlink",
                                      "rename", "fork", "pipe",  "socket", "thread"};
constexpr int errors[Kinds] = {EMFILE, EIO, ENOSPC, EROFS, EACCES, EIO, EAGAIN, EMFILE, EMFILE, EAGAIN};

struct Plan {
    bool active = false;
    int kind = Kinds;
    std::uint32_t number = 0;
    std::atomic<std::uint32_t>* counts = nullptr;
};

std::atomic<std::uint32_t> ownCounts[Kinds];

Plan makePlan() {
    Plan plan;
    plan.counts = ownCounts;
    const char* program = std::getenv("FAILING_PROGRAM");
    const char* call = std::getenv("FAILING_CALL");
    if (program == nullptr || call == nullptr || std::strcmp(program, program_invocation_short_name) != 0)
        return plan;
    const char* colon = std::strchr(call, ':');
    for (int kind = 0; kind < Kinds; ++kind)
        if (colon != nullptr && std::string_view(call, static_cast<std::size_t>(colon - call)) == names[kind])
            plan.kind = kind;
    plan.number = colon != nullptr ? static_cast<std::uint32_t>(std::atoi(colon + 1)) : 0;
    if (const char* path = std::getenv("FAILING_COUNTS")) {
        const auto open = reinterpret_cast<int (*)(const char*, int, ...)>(dlsym(RTLD_NEXT, "open"));
        const int file = open(path, O_RDWR | O_CLOEXEC);
        void* memory = mmap(nullptr, sizeof ownCounts, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (memory != MAP_FAILED)
            plan.counts = static_cast<std::atomic<std::uint32_t>*>(memory);
        close(file);
    }
    plan.active = true;
    return plan;
}

Plan plan;

__attribute__((constructor)) void begin() {
    plan = makePlan();
}

// Whether this call is the one that fails; errno is then set.
bool fails(Kind kind) {
    if (!plan.active)
        return false;
    const std::uint32_t count = ++plan.counts[kind];
    if (plan.kind != kind || plan.number != count)
        return false;
    errno = errors[kind];
    return true;
}

// Descriptors of the event loop never fail to be read or written, and nothing could go on if they did.
bool canFail(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && (S_ISREG(status.st_mode) || S_ISSOCK(status.st_mode));
}

// A sanitizer's runtime tries addresses by writing them to pipes of its own.
bool isSanitizer(void* caller) {
    Dl_info place{};
    return dladdr(caller, &place) != 0 && std::strstr(place.dli_fname, "san.so") != nullptr;
}

bool isProgram(void* caller) {
    Dl_info place{};
    return dladdr(caller, &place) != 0 && std::strstr(place.dli_fname, program_invocation_short_name) != nullptr;
}

template <class Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list list) {
    return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(list, mode_t) : 0;
}

} // namespace

extern "C" {

#define OPENS(name)                                                                                                    \
    int name(const char* path, int flags, ...) {                                                                       \
        va_list list;                                                                                                  \
        va_start(list, flags);                                                                                         \
        const mode_t mode = modeOf(flags, list);                                                                       \
        va_end(list);                                                                                                  \
        return fails(Open) ? -1 : next<int (*)(const char*, int, ...)>(#name)(path, flags, mode);                      \
    }
#define OPENS_AT(name)                                                                                                 \
    int name(int folder, const char* path, int flags, ...) {                                                           \
        va_list list;                                                                                                  \
        va_start(list, flags);                                                                                         \
        const mode_t mode = modeOf(flags, list);                                                                       \
        va_end(list);                                                                                                  \
        return fails(Open) ? -1 : next<int (*)(int, const char*, int, ...)>(#name)(folder, path, flags, mode);         \
    }
OPENS(open)
OPENS(open64)
OPENS_AT(openat)
OPENS_AT(openat64)

ssize_t read(int descriptor, void* buffer, size_t size) {
    if (canFail(descriptor) && fails(Read))
        return -1;
    return next<ssize_t (*)(int, void*, size_t)>("read")(descriptor, buffer, size);
}

ssize_t write(int descriptor, const void* buffer, size_t size) {
    if (canFail(descriptor) && fails(Write))
        return -1;
    return next<ssize_t (*)(int, const void*, size_t)>("write")(descriptor, buffer, size);
}

#define FAILS(kind, result, name, parameters, ...)                                                                     \
    result name parameters noexcept {                                                                                  \
        return fails(kind) ? -1 : next<result(*) parameters>(#name)(__VA_ARGS__);                                      \
    }
FAILS(MakeFolder, int, mkdir, (const char* path, mode_t mode), path, mode)
FAILS(MakeFolder, int, mkdirat, (int folder, const char* path, mode_t mode), folder, path, mode)
FAILS(Unlink, int, unlink, (const char* path), path)
FAILS(Unlink, int, unlinkat, (int folder, const char* path, int flags), folder, path, flags)
FAILS(Rename, int, rename, (const char* from, const char* to), from, to)
FAILS(Rename, int, renameat, (int from, const char* path, int to, const char* newPath), from, path, to, newPath)
FAILS(Rename, int, renameat2, (int from, const char* path, int to, const char* newPath, unsigned flags), from, path, to,
      newPath, flags)
FAILS(Fork, pid_t, fork, ())
FAILS(Fork, pid_t, _Fork, ())

int pipe(int ends[2]) noexcept {
    if (!isSanitizer(__builtin_return_address(0)) && fails(Pipe))
        return -1;
    return next<int (*)(int*)>("pipe")(ends);
}
int pipe2(int ends[2], int flags) noexcept {
    if (!isSanitizer(__builtin_return_address(0)) && fails(Pipe))
        return -1;
    return next<int (*)(int*, int)>("pipe2")(ends, flags);
}
int eventfd(unsigned count, int flags) noexcept {
    if (isProgram(__builtin_return_address(0)) && fails(Pipe))
        return -1;
    return next<int (*)(unsigned, int)>("eventfd")(count, flags);
}
ssize_t getrandom(void* buffer, size_t size, unsigned flags) noexcept {
    if (isProgram(__builtin_return_address(0)) && fails(Read))
        return -1;
    return next<ssize_t (*)(void*, size_t, unsigned)>("getrandom")(buffer, size, flags);
}
int socket(int domain, int type, int protocol) noexcept {
    return fails(Socket) ? -1 : next<int (*)(int, int, int)>("socket")(domain, type, protocol);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
    if (fails(Thread))
        return errors[Thread];
    return next<decltype(&pthread_create)>("pthread_create")(thread, attributes, start, argument);
}
}
