// Starts a program with SIGPIPE restored, which the library's TCP sockets set to be ignored in the whole process.
//   childProgram PROGRAM [ARGUMENT...]

#include <gqLib/gqSocketUnix.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

//! [runProgram]
pid_t runProgram(const char* path, char* const* arguments)
{
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        execvp(path, arguments);
        _exit(127);
    }
    return child;
}
//! [runProgram]

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: childProgram PROGRAM [ARGUMENT...]\n");
        return 2;
    }
    const CTcpSocket socket; // SIGPIPE is ignored from here on
    int status = 0;
    waitpid(runProgram(argv[1], argv + 1), &status, 0);
    if (WIFSIGNALED(status))
        std::printf("ended by signal %d\n", WTERMSIG(status));
    else
        std::printf("ended with %d\n", WEXITSTATUS(status));
    return 0;
}
