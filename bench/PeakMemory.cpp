// kestrune-peak-memory COMMAND [ARGUMENTS...]: runs the command with its output thrown away, then prints its
// peak resident memory in bytes. A process of its own, and a small one, because a child inherits its
// parent's high-water mark when it is started: measured from the benchmark, which holds a whole library,
// every command would seem to take as much.
#include <cstdio>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char *argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: kestrune-peak-memory COMMAND [ARGUMENTS...]\n");
        return 2;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (pid < 0 || wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return 1;
    std::printf("%lld\n", static_cast<long long>(usage.ru_maxrss) * 1024);
    return 0;
}
