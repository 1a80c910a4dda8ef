/* Checks an archive, plans, updates a target with progress and verifies it, in C99.

   usage: update ARCHIVE HOST [EMULATED_TARGET]

   With a folder of an emulated target HOST is its address. Ctrl-C asks the update to end. */

#include <kvreflash.h>
#ifdef WITH_EMULATION
#include <kvreflash_emulation.h>
#endif

#include <signal.h>
#include <stdio.h>
#include <string.h>

static volatile sig_atomic_t isStopWanted = 0;

static void onInterrupt(int number) {
    (void)number;
    isStopWanted = 1;
}

static void onEvent(const kvr_event* event, void* context) {
    kvr_session* session = (kvr_session*)context;
    switch (event->kind) {
    case KVR_EVENT_PHASE:
        if (event->value != UINT32_MAX) {
            printf("Phase %u\n", (unsigned)event->value);
        }
        break;
    case KVR_EVENT_PROGRESS:
        printf("  %u %%\n", (unsigned)event->value);
        break;
    default:
        break; /* messages, and kinds of later versions */
    }
    if (isStopWanted) {
        (void)kvr_request_stop(session, KVR_STOP_FINISH);
    }
}

/* Prints what is wrong with an archive; 1 if it is refused. */
static int check(const char* folder) {
    kvr_archive_options options;
    kvr_archive* archive = NULL;
    uint32_t count = 0;
    uint32_t index;
    int32_t result;
    memset(&options, 0, sizeof options);
    options.size = sizeof options;
    options.archive = folder;
    result = kvr_archive_create(&options, &archive);
    if (result == KVR_SUCCESS) {
        result = kvr_archive_check(archive, &count);
    }
    for (index = 0; index < count; ++index) {
        kvr_finding finding;
        memset(&finding, 0, sizeof finding);
        finding.size = sizeof finding;
        if (kvr_archive_get_finding(archive, index, &finding) == KVR_SUCCESS) {
            printf("%s: %s\n", finding.severity == 0 ? "error" : "warning", finding.message);
        }
    }
    (void)kvr_archive_free(archive);
    return result == KVR_SUCCESS ? 0 : 1;
}

static void printPlan(kvr_session* session) {
    kvr_plan plan;
    uint32_t index;
    memset(&plan, 0, sizeof plan);
    plan.size = sizeof plan;
    if (kvr_session_get_plan(session, &plan) != KVR_SUCCESS) {
        return;
    }
    printf("%u of %u elements are updated\n", (unsigned)plan.changes, (unsigned)plan.elements);
    for (index = 0; index < plan.elements; ++index) {
        kvr_element element;
        memset(&element, 0, sizeof element);
        element.size = sizeof element;
        if (kvr_session_get_element(session, index, &element) == KVR_SUCCESS && element.updated) {
            printf("  %s: %s -> %s\n", element.display_name, element.version, element.available_version);
        }
    }
}

/* Prints why a session has failed, and returns the exit code. */
static int conclude(kvr_session* session) {
    kvr_outcome outcome;
    memset(&outcome, 0, sizeof outcome);
    outcome.size = sizeof outcome;
    if (kvr_session_get_outcome(session, &outcome) != KVR_SUCCESS) {
        fprintf(stderr, "%s\n", kvr_last_error());
        return 1;
    }
    if (outcome.failure != KVR_FAILURE_NONE) {
        fprintf(stderr, "%s: %s\n", kvr_code(KVR_CODE_FAILURE, outcome.failure), outcome.message);
    }
    return (int)outcome.exit_code;
}

static int update(const char* archive, const char* host) {
    kvr_session_options options;
    kvr_session* session = NULL;
    int code;
    memset(&options, 0, sizeof options);
    options.size = sizeof options;
    options.mode = KVR_MODE_UPDATE;
    options.flags = KVR_WATCH_FILES;
    options.archive = archive;
    options.target = host;
    if (kvr_session_create(&options, &session) != KVR_SUCCESS) {
        fprintf(stderr, "%s\n", kvr_last_error());
        return 1;
    }
    if (kvr_session_set_event_function(session, onEvent, session) == KVR_SUCCESS &&
        kvr_prepare(session) == KVR_SUCCESS) {
        printPlan(session);
        if (kvr_preflight(session) == KVR_SUCCESS && kvr_run(session) == KVR_SUCCESS) {
            printf("Verified: %s\n", kvr_verify(session, 0) == KVR_SUCCESS ? "yes" : "no");
        }
    }
    code = conclude(session);
    (void)kvr_session_free(session);
    return code;
}

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: update ARCHIVE HOST [EMULATED_TARGET]\n");
        return 64;
    }
#ifdef WITH_EMULATION
    if (argc > 3 && kvr_emulation_serve(argv[3], NULL, 0) != 0) {
        fprintf(stderr, "%s\n", kvr_emulation_last_error());
        return 1;
    }
#endif
    (void)signal(SIGINT, onInterrupt);
    if (check(argv[1]) != 0) {
        return 3;
    }
    return update(argv[1], argv[2]);
}
