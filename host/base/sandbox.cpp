#include "host/base/sandbox.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

// Later parts of the kernel's interface, which the system's headers may not have.
constexpr std::uint64_t truncate = 1 << 14, listenTcp = 1, connectTcp = 2;
struct Guarded {
    std::uint64_t files, connections;
};

constexpr std::uint64_t execute = LANDLOCK_ACCESS_FS_EXECUTE, write = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::uint64_t read = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t arrange =
    LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
    LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
// The rights that a rule on a file may give; the others are those of a folder.
constexpr std::uint64_t rightsOfFiles = execute | write | LANDLOCK_ACCESS_FS_READ_FILE | truncate;

std::atomic<bool> isConfined = false;

class Descriptor {
 public:
    explicit Descriptor(long number) : m_number(int(number)) {}
    ~Descriptor() {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return m_number; }

 private:
    int m_number;
};

[[noreturn]] void Refuse(int error) {
    throw HostError(ExitCode::Failed,
                    std::string("--sandbox needs a Linux kernel that runs Landlock, and this one does "
                                "not (") +
                        std::strerror(error) + "); leave --sandbox out, or boot with lsm=landlock,...");
}

void Allow(const Descriptor& rules, const std::vector<std::filesystem::path>& paths, std::uint64_t rights) {
    for (const std::filesystem::path& path : paths) {
        const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat status;
        if (place.Number() < 0 || fstat(place.Number(), &status) != 0) continue;
        landlock_path_beneath_attr rule{};
        rule.allowed_access = S_ISDIR(status.st_mode) ? rights : rights & rightsOfFiles;
        rule.parent_fd = place.Number();
        if (syscall(SYS_landlock_add_rule, rules.Number(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0) Refuse(errno);
    }
}

}  // namespace

void EnterSandbox(const Reach& reach) {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) Refuse(errno);
    const std::uint64_t writing =
        write | arrange | (version >= 2 ? LANDLOCK_ACCESS_FS_REFER : 0) | (version >= 3 ? truncate : 0);
    const Guarded guarded = {execute | read | writing, reach.listens ? connectTcp : listenTcp | connectTcp};
    const std::size_t size = version >= 4 ? sizeof guarded : sizeof guarded.files;
    const Descriptor rules(syscall(SYS_landlock_create_ruleset, &guarded, size, 0));
    if (rules.Number() < 0) Refuse(errno);
    Allow(rules, reach.read, read);
    Allow(rules, reach.write, read | writing);
    Allow(rules, reach.run, read | execute);
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || syscall(SYS_landlock_restrict_self, rules.Number(), 0) != 0)
        Refuse(errno);
    isConfined = true;
}

bool IsInSandbox() { return isConfined; }

}  // namespace Nifikral
