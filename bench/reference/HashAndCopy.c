/* The least that copying files costs whose SHA-256 is to be known: hash_and_copy FILE... FOLDER reads each file once,
   piece by piece, and writes it into the folder. Exit code 1 when a file cannot be read or written. */

#include <fcntl.h>
#include <gcrypt.h>
#include <libgen.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static char piece[256 << 10];

static int copy(int from, int to, gcry_md_hd_t hash) {
    ssize_t size = 0;
    while ((size = read(from, piece, sizeof piece)) > 0) {
        gcry_md_write(hash, piece, (size_t)size);
        if (write(to, piece, (size_t)size) != size) {
            return 0;
        }
    }
    return size == 0 && gcry_md_read(hash, GCRY_MD_SHA256) != NULL;
}

static int take(char* path, const char* folder) {
    gcry_md_hd_t hash;
    char target[4096];
    const int from = open(path, O_RDONLY);
    snprintf(target, sizeof target, "%s/%s", folder, basename(path));
    const int to = open(target, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (from < 0 || to < 0 || gcry_md_open(&hash, GCRY_MD_SHA256, 0) != 0) {
        return 0;
    }
    const int isCopied = copy(from, to, hash);
    gcry_md_close(hash);
    close(from);
    return close(to) == 0 && isCopied;
}

int main(int argc, char** argv) {
    if (argc < 3 || gcry_check_version(NULL) == NULL) {
        return 64;
    }
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    for (int index = 1; index + 1 < argc; ++index) {
        if (!take(argv[index], argv[argc - 1])) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
