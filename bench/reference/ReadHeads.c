/* What looking into the update files of an archive costs at least: read_heads LIST asks for each file of the list, one
   path a line, whether it is there, opens it, reads its first 1000 bytes and closes it. */

#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static int readHead(const char* path) {
    char head[1000];
    if (access(path, F_OK) != 0) {
        return 0;
    }
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return 0;
    }
    const ssize_t length = read(file, head, sizeof head);
    return close(file) == 0 && length > 0;
}

int main(int argc, char** argv) {
    char path[4096];
    FILE* list = argc == 2 ? fopen(argv[1], "r") : NULL;
    if (list == NULL) {
        return 64;
    }
    int allRead = 1;
    while (fgets(path, sizeof path, list) != NULL) {
        path[strcspn(path, "\n")] = '\0';
        allRead = readHead(path) && allRead;
    }
    fclose(list);
    return allRead ? 0 : 1;
}
