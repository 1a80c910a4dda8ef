/* Runs a command and tells what it took: run_measured COMMAND [ARGUMENT...] prints its exit code, seconds of wall and
   of processor time, and KiB at its peak. The command's output goes to /dev/null.

   A process's peak begins with that of the process that started it, so the one who starts has to be small. */

#define _GNU_SOURCE

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

static double seconds(struct timeval time) {
    return (double)time.tv_sec + (double)time.tv_usec * 1e-6;
}

static void become(char** command) {
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0 && dup2(nowhere, STDERR_FILENO) >= 0) {
        execvp(command[0], command);
    }
    _exit(127);
}

int main(int argc, char** argv) {
    if (argc < 2) {
        return 64;
    }
    const double begin = now();
    const pid_t child = fork();
    if (child == 0) {
        become(argv + 1);
    }
    int status = 0;
    struct rusage usage;
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        return EXIT_FAILURE;
    }
    const double wall = now() - begin;
    printf("%d %.6f %.6f %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : -1, wall,
           seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss);
    return EXIT_SUCCESS;
}
