/** @file
   KvReflashLib in C: update sessions with one target, archives, saved plans and the journal of runs, for programs in
   any language.

   The rules of this interface:

   1. Results. A function returns 0 (KVR_SUCCESS) or what its comment states. A negative result is a failure of the call
      itself: wrong argument, exhausted memory, wrong order, a record that is too small. kvr_last_error() has its text,
      and that of other results if the comment of the function says so.
   2. Handles. kvr_..._create() makes a handle, and the caller gives it back with kvr_..._free(), which takes null, too.
      A handle is a number and not an address: null, a handle of another kind and one that was freed are refused with
      KVR_ERROR_ARGUMENT, and no number is used twice in a process.
   3. Records. A record begins with `size`, which the caller sets to the size that he knows. The library reads and fills
      no more than that. Fields that he does not give are 0. Fields that are new come at the end. A size below that of
      the first version of the record is refused with KVR_ERROR_VERSION.
   4. Texts. All texts are UTF-8 and end with a zero byte. A text that is given may be null, which is the empty text; it
      is copied. A text that is returned is never null; it lasts until the same function is called again with the same
      handle, or the handle is freed.
   5. Lists. The items of a list are asked for by their index, from 0. An index past the end is KVR_ERROR_ARGUMENT.
   6. Threads. A handle is used by one thread at a time; what else is allowed says the function. Handles of their own
      may be used at the same time, but sessions share the list of errors of the process: an error of one makes
      kvr_run() of the others return 1.
   7. Callbacks. They run on the thread that has called the function, within it. They must return, and must not free the
      handle. Of its session they may call kvr_session_get_...() and kvr_request_stop(). Kinds that they do not
      know are to be ignored.
   8. No exception leaves a function. What lacks memory returns KVR_ERROR_MEMORY.
   9. Numbers. Enumerations are stored as 32-bit numbers, and new values may be added: take one that is not known for
      "something else". kvr_code() has the word that documents use. What is not known has no bit in `known`, and its
      number is 0.
   10. Growth. Functions, fields and values are added and never changed. kvr_abi_version() grows with each addition. */

#ifndef KVREFLASH_H
#define KVREFLASH_H

/* This is C. NOLINTBEGIN(modernize-deprecated-headers, modernize-use-using) */
#include <stdint.h>

/** @def KVR_CALL
   The calling convention of functions and callbacks. */
/** @def KVR_API
   Marks a function of the library for the compiler. */
#if defined(_WIN32)
#define KVR_CALL __cdecl
#if defined(KV_REFLASH_BUILD)
#define KVR_API __declspec(dllexport)
#elif defined(KV_REFLASH_STATIC)
#define KVR_API
#else
#define KVR_API __declspec(dllimport)
#endif
#else
#define KVR_CALL
#define KVR_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this interface that the header describes. */
#define KVR_ABI_VERSION 1u

/** Results. */
enum {
    KVR_SUCCESS = 0,
    KVR_FAILED = 1,          /**< the operation has failed, and its record or document states why */
    KVR_UNSUPPORTED = 2,     /**< kvr_prepare(): the archive does not support the target */
    KVR_ERROR_ARGUMENT = -1, /**< a handle, an index or a text is wrong */
    KVR_ERROR_MEMORY = -2,   /**< memory is exhausted */
    KVR_ERROR_ORDER = -3,    /**< the function must not be called now */
    KVR_ERROR_VERSION = -4   /**< a record is smaller than its first version */
};

/* Handles. */
typedef struct kvr_session kvr_session; /**< a session with one target */
typedef struct kvr_archive kvr_archive; /**< an archive that is looked at without a target */
typedef struct kvr_runs kvr_runs;       /**< the runs of a journal */

/* --- the library ------------------------------------------------------------------------------------------------- */

/** Returns the version of this interface that the library has; never below that of a program that works with it. Any
   thread. */
KVR_API uint32_t KVR_CALL kvr_abi_version(void);

/** Returns the version of the library, such as "1.1" or "1.1.2". Lasts as long as the process. Any thread. */
KVR_API const char* KVR_CALL kvr_version(void);

/** Returns why the last call of this thread had a negative result, or one whose text is here (rule 1); empty otherwise.
   Lasts until the next call of this thread. */
KVR_API const char* KVR_CALL kvr_last_error(void);

/** Enumerations for kvr_code(). */
enum {
    KVR_CODE_FAILURE = 0,
    KVR_CODE_STAGE = 1,
    KVR_CODE_REASON = 2,
    KVR_CODE_RESULT = 3,
    KVR_CODE_VERIFIED = 4,
    KVR_CODE_FAILED_CALL = 5,
    KVR_CODE_SEVERITY = 6,
    KVR_CODE_SEAL = 7,
    KVR_CODE_CHANGE = 8,
    KVR_CODE_RUN_STATE = 9
};

/** Returns the word that documents use for a value of an enumeration (KVR_CODE_...), such as "archive"; empty if there
   is none. Lasts as long as the process. Any thread. */
KVR_API const char* KVR_CALL kvr_code(uint32_t enumeration, uint32_t value);

/** Classes of failures, the first one counts if several apply. */
enum {
    KVR_FAILURE_ARCHIVE = 0,       /**< the archive was refused */
    KVR_FAILURE_TARGET = 1,        /**< the target was not reached, or cannot be scanned */
    KVR_FAILURE_STALE = 2,         /**< a saved plan, or a run that is to go on, does not hold any more */
    KVR_FAILURE_UNSUPPORTED = 3,   /**< the archive does not support the target */
    KVR_FAILURE_SELECTION = 4,     /**< a filter lets no element through, or a named element does not exist */
    KVR_FAILURE_LOCKED = 5,        /**< the target could not be locked, or its run is under way */
    KVR_FAILURE_STOPPED = 6,       /**< ended on request */
    KVR_FAILURE_ELEMENTS = 7,      /**< an element or file failed */
    KVR_FAILURE_ERRORS = 8,        /**< errors were reported */
    KVR_FAILURE_REBOOT = 9,        /**< the target was not rebooted */
    KVR_FAILURE_VERIFICATION = 10, /**< the target does not report what it should */
    KVR_FAILURE_OUTPUT = 11,       /**< something could not be written */
    KVR_FAILURE_NONE = 12
};

/** Returns the exit code of the console tool for a failure (KVR_FAILURE_...), 1 for one that is not known. Any thread.
 */
KVR_API uint32_t KVR_CALL kvr_exit_code(uint32_t failure);

/* --- sessions ---------------------------------------------------------------------------------------------------- */

/** Modes of a session. */
enum {
    KVR_MODE_ELEMENTS = 4, /**< scans the target */
    KVR_MODE_CONNECT = 5,  /**< scans the target, before a reboot */
    KVR_MODE_PLAN = 6,     /**< reads the archive, scans the target and plans */
    KVR_MODE_UPDATE = 7    /**< plans and updates */
};

/** Bits of kvr_session_options.flags. */
enum {
    KVR_FORCE = 1,              /**< updates elements that are up to date, too */
    KVR_VERBOSE = 2,            /**< messages with details */
    KVR_CONFIGURATION = 4,      /**< looks at configuration elements instead of the others */
    KVR_SKIP_CUSTOM = 8,        /**< leaves custom elements out */
    KVR_NO_DOWNGRADE = 16,      /**< leaves out elements for which the archive has a lower version */
    KVR_WATCH_FILES = 32,       /**< notices update files that change while they are used */
    KVR_RELEASE = 64,           /**< obeys the archive's manifest and verifies its signatures, as a trust folder does */
    KVR_ACCEPT_UNSEALED = 128,  /**< with a trust folder: accepts archives that are not sealed or signed */
    KVR_JOURNAL_REQUIRED = 256, /**< nothing begins that cannot be written into the journal */
    KVR_REDO = 512              /**< a run that goes on: updates elements in doubt again */
};

/** Treatment of files that the inventory does not list. */
enum {
    KVR_UNLISTED_ALWAYS = 0,  /**< all are written */
    KVR_UNLISTED_CHANGED = 1, /**< those whose content is not the one that the journal has for this place */
    KVR_UNLISTED_NEVER = 2
};

/** Options of a session. */
typedef struct kvr_session_options {
    uint32_t size;              /**< of the record, as the caller knows it (rule 3) */
    uint32_t mode;              /**< KVR_MODE_... */
    uint32_t flags;             /**< KVR_FORCE and the following */
    uint32_t unlisted_files;    /**< KVR_UNLISTED_... */
    uint32_t stall_limit;       /**< gives up when nothing new shows for so many seconds; 0: never */
    uint32_t reserved;          /**< 0 */
    const char* target;         /**< IPv4 address or name of the target */
    const char* archive;        /**< folder or package of the archive */
    const char* description;    /**< file name of its description; empty: "archive.json" */
    const char* board_types;    /**< filters: words separated by commas or blanks; empty: all */
    const char* serial_numbers; /**< as board_types, in decimal */
    const char* element_names;  /**< as board_types, names of the inventory */
    const char* trust_folder;   /**< empty: nobody is trusted */
    const char* journal_folder; /**< empty: no journal */
    const char* journal_place;  /**< identifies the target in the journal, beside address and serial numbers: the
                                   folder of an emulated one */
    const char* saved_plan;     /**< content of a saved plan: the session does exactly that. Target, filters and what
                                   decides come from the plan, the archive too unless it is given here */
    const char* resumed_run;    /**< id of a run of the journal: the session goes on with it, in the same way */
} kvr_session_options;

/** Makes a session. Nothing is read yet. `session` receives the handle, and null if the result is negative.
   KVR_ERROR_ARGUMENT, too, if the saved plan or the run cannot be read, if both are given, and for a run without a
   journal folder. */
KVR_API int32_t KVR_CALL kvr_session_create(const kvr_session_options* options, kvr_session** session);

/** Ends a session and releases all that it holds of the target. Not from one of its callbacks: KVR_ERROR_ORDER. */
KVR_API int32_t KVR_CALL kvr_session_free(kvr_session* session);

/** Kinds of events. */
enum {
    KVR_EVENT_PHASE = 0,         /**< value: number of the phase that begins; 0xFFFFFFFF after the last one */
    KVR_EVENT_PROGRESS = 1,      /**< value: percentage of the running phase */
    KVR_EVENT_ELEMENT_ERROR = 2, /**< value: index of the element whose update has failed */
    KVR_EVENT_LOCKED = 3,
    KVR_EVENT_UNLOCKED = 4,      /**< succeeded: whether the lock was given back */
    KVR_EVENT_TRANSFER = 5,      /**< value: index of the entry; succeeded: whether the target has its file */
    KVR_EVENT_ELEMENT_START = 6, /**< value: index of the element */
    KVR_EVENT_ELEMENT_END = 7,   /**< value: index of the element; succeeded: whether its update has */
    KVR_EVENT_STALLED = 8,       /**< value: seconds without news */
    KVR_EVENT_MESSAGE = 100      /**< text: what a console would show, line ends included */
};

/** Something that happens while a function of a session goes on. */
typedef struct kvr_event {
    uint32_t size;      /**< of the record, as the caller knows it (rule 3) */
    uint32_t kind;      /**< KVR_EVENT_... */
    uint32_t value;     /**< see the kinds; 0 for others */
    uint32_t succeeded; /**< 0 if what has ended has failed, otherwise 1 */
    const char* text;   /**< lasts as long as the call; empty but for messages */
} kvr_event;

/** Receives events; `context` is what was given with the function. */
typedef void(KVR_CALL* kvr_event_function)(const kvr_event* event, void* context);

/** Sends the events of the session to `function`; null: to nobody. Before kvr_prepare(), otherwise
   KVR_ERROR_ORDER. Without a function messages go nowhere. */
KVR_API int32_t KVR_CALL kvr_session_set_event_function(kvr_session* session, kvr_event_function function,
                                                        void* context);

/** Reads the archive, finds and scans the target, and plans, as the mode asks. 0: ready. 1: failed, and
   kvr_session_get_outcome() states why. 2: the archive does not support the target. Once for each session. A saved plan
   or a run that does not hold any more is 1, and the faults list all differences. Filters that let no element through
   are 1. */
KVR_API int32_t KVR_CALL kvr_prepare(kvr_session* session);

/** Leaves an element out of the update. `element` is its index in digits, its inventory address, its target path or its
   displayed name. `found` (may be null) receives the number of elements that are named so. 0: the element is left out.
   1: not exactly one was found, and nothing has changed. Between prepare and run. */
KVR_API int32_t KVR_CALL kvr_disable(kvr_session* session, const char* element, uint32_t* found);

/** Checks the update files that an update would use. 0: they are good. 1: the faults say what is wrong, and
   kvr_run() is refused. Between prepare and run. */
KVR_API int32_t KVR_CALL kvr_preflight(kvr_session* session);

/** Updates the target in the mode KVR_MODE_UPDATE, and prints what other modes print. 0: succeeded. 1: failed, or
   errors were reported. Once, after kvr_prepare() has returned 0. */
KVR_API int32_t KVR_CALL kvr_run(kvr_session* session);

/** Ways to end kvr_run() early. */
enum {
    KVR_STOP_FINISH = 0, /**< nothing new begins; updates that have begun are awaited */
    KVR_STOP_GIVE_UP = 1 /**< updates that have begun are not awaited either */
};

/** Asks a running update to end. Never taken back. Any thread, at any time; not from a signal handler. */
KVR_API int32_t KVR_CALL kvr_request_stop(kvr_session* session, uint32_t how);

/** Looks at what the target reports now and holds it against the plan and what was updated. `was_rebooted`: 1 if the
   target was rebooted since; a target that comes up needs some time: call again until it answers. 0: it reports what it
   should. 1: it does not, or could not be looked at. After kvr_prepare() has returned 0 and, in the mode
   KVR_MODE_UPDATE, kvr_run() was called. */
KVR_API int32_t KVR_CALL kvr_verify(kvr_session* session, uint32_t was_rebooted);

/** Resets the target. 0: it was reset. 1: it was not. After a prepare that has scanned the target. */
KVR_API int32_t KVR_CALL kvr_reboot(kvr_session* session);

/** Bits of `known` in records of elements. */
enum {
    KVR_KNOWS_VERSION = 1,
    KVR_KNOWS_CHECKSUM = 2,
    KVR_KNOWS_VALID = 4,
    KVR_KNOWS_ACTIVE = 8,
    KVR_KNOWS_ENTRY = 16, /**< an entry of the archive matches the element */
    KVR_KNOWS_PHASE = 32,
    KVR_KNOWS_STATE = 64
};

/** The plan of a session. */
typedef struct kvr_plan {
    uint32_t size;               /**< of the record, as the caller knows it (rule 3) */
    uint32_t elements;           /**< number of elements */
    uint32_t changes;            /**< elements that an update changes */
    uint32_t phases;             /**< phases of the update */
    uint32_t entries;            /**< accepted entries of the archive */
    uint32_t supported;          /**< 0: the archive does not support the target */
    uint32_t nodes;              /**< number of processor nodes whose serial number is known */
    uint32_t reserved;           /**< 0 */
    const char* target_address;  /**< IPv4, in dotted form */
    const char* archive_name;    /**< these are empty without an archive */
    const char* archive_version; /**< of the whole release */
    const char* product_name;    /**< product that the archive updates */
    const char* archive_variant; /**< may be empty */
} kvr_plan;

/** Fills `plan`. KVR_ERROR_ORDER if the target was not scanned. */
KVR_API int32_t KVR_CALL kvr_session_get_plan(kvr_session* session, kvr_plan* plan);

/** `serial_number` receives that of a processor node. */
KVR_API int32_t KVR_CALL kvr_session_get_node(kvr_session* session, uint32_t index, uint32_t* serial_number);

/** An element of the target, and what an update does to it. */
typedef struct kvr_element {
    uint32_t size;                 /**< of the record, as the caller knows it (rule 3) */
    uint32_t index;                /**< the "No." of the plan */
    uint32_t known;                /**< KVR_KNOWS_... of what is installed and planned */
    uint32_t updated;              /**< 1: it takes part in the update */
    uint32_t disabled;             /**< 1: it takes no part: it was left out, or is up to date */
    uint32_t up_to_date;           /**< 1: the archive has nothing else for it */
    uint32_t downgrade;            /**< 1: the archive has a lower version than is installed */
    uint32_t custom;               /**< 1: a custom element */
    uint32_t phase;                /**< from 0 */
    uint32_t entry;                /**< index of the entry that matches it */
    uint32_t element_id;           /**< the number by which entries name it; 0 for a file */
    uint32_t serial_number;        /**< of the board */
    uint32_t slot;                 /**< of the board */
    uint32_t slot_count;           /**< 0: the board has no slot */
    uint32_t checksum;             /**< CRC-32 of what is installed */
    uint32_t valid;                /**< 1: what is installed is complete */
    uint32_t active;               /**< 1: the board runs what is installed */
    uint32_t reasons;              /**< number of reasons for or against the update */
    const char* display_name;      /**< in tables and results */
    const char* type_name;         /**< kind of element, such as "Firmware" */
    const char* name;              /**< in the inventory, such as "UserFirmware" */
    const char* address;           /**< in the inventory; empty for a file that it does not list */
    const char* target_path;       /**< of a file, below the root of the target's file system */
    const char* board_type;        /**< of the board, such as "QB4120" */
    const char* board_variant;     /**< may be empty */
    const char* board_name;        /**< type and variant, for people */
    const char* unit_path;         /**< where the unit is, from the outermost one */
    const char* version;           /**< of what is installed */
    const char* available_version; /**< of the entry; empty if it states none */
    uint32_t available_checksum;   /**< of the entry; 0 if it states none */
    uint32_t board_id;             /**< product number of the board; 0: none */
} kvr_element;

/** Fills `element` with the element of this index. */
KVR_API int32_t KVR_CALL kvr_session_get_element(kvr_session* session, uint32_t index, kvr_element* element);

/** Reasons for an update, up to KVR_REASON_FORCED and KVR_REASON_CONTENT_DIFFERS, and against it. */
enum {
    KVR_REASON_VERSION_DIFFERS = 0,
    KVR_REASON_CHECKSUM_DIFFERS = 1,
    KVR_REASON_INVALID = 2,  /**< the installed image is not valid */
    KVR_REASON_INACTIVE = 3, /**< the installed image is not active */
    KVR_REASON_FORCED = 4,   /**< it is up to date, and KVR_FORCE is given */
    KVR_REASON_UP_TO_DATE = 5,
    KVR_REASON_NEWER_INSTALLED = 6, /**< the entry is for upgrades only */
    KVR_REASON_NO_ENTRY = 7,
    KVR_REASON_FEATURE_LEVEL = 8, /**< only an entry matches that this library must ignore */
    KVR_REASON_CUSTOM_LEFT_OUT = 9,
    KVR_REASON_DISABLED = 10,
    KVR_REASON_CARRIER_BOARD_MISSING = 11,
    KVR_REASON_DOWNGRADE_LEFT_OUT = 12,
    KVR_REASON_CONTENT_DIFFERS = 13,   /**< of a file: the journal does not have this content */
    KVR_REASON_UNLISTED_LEFT_OUT = 14, /**< a file that the inventory does not list */
    KVR_REASON_WRITTEN_BEFORE = 15,    /**< of a file: the journal has this content */
    KVR_REASON_DONE_BEFORE = 16,       /**< the run that goes on has installed it */
    KVR_REASON_IN_DOUBT = 17           /**< it was in progress when that run broke off; see KVR_REDO */
};

/** `reason` receives a reason (KVR_REASON_...) for the decision on an element. */
KVR_API int32_t KVR_CALL kvr_session_get_reason(kvr_session* session, uint32_t element, uint32_t index,
                                                uint32_t* reason);

/** An entry of an archive. */
typedef struct kvr_entry {
    uint32_t size;              /**< of the record, as the caller knows it (rule 3) */
    uint32_t index;             /**< among the accepted entries */
    uint32_t description_index; /**< in "files" of the description */
    uint32_t known;             /**< KVR_KNOWS_VERSION, KVR_KNOWS_CHECKSUM */
    uint32_t checksum;          /**< CRC-32 of the contents */
    uint32_t sequence;          /**< lower ones are installed in an earlier phase */
    uint32_t upgrade_only;      /**< 1: only greater versions are installed */
    uint32_t reserved;          /**< 0 */
    const char* file_name;      /**< relative to the archive */
    const char* version;        /**< of the contents; empty if it states none */
} kvr_entry;

/** Fills `entry` with the accepted entry of this index. */
KVR_API int32_t KVR_CALL kvr_session_get_entry(kvr_session* session, uint32_t index, kvr_entry* entry);

/** Stages of a session. Each includes those before it. */
enum {
    KVR_STAGE_CREATED = 0,
    KVR_STAGE_ARCHIVE_READ = 1,
    KVR_STAGE_TARGET_FOUND = 2,
    KVR_STAGE_TARGET_SCANNED = 3,
    KVR_STAGE_PREPARED = 4,
    KVR_STAGE_LOCKED = 5,
    KVR_STAGE_PHASES_RUN = 6,
    KVR_STAGE_ENDED = 7,
    KVR_STAGE_REBOOTED = 8
};

/** Outcome of a session so far. */
typedef struct kvr_outcome {
    uint32_t size;       /**< of the record, as the caller knows it (rule 3) */
    uint32_t stage;      /**< KVR_STAGE_... */
    uint32_t failure;    /**< KVR_FAILURE_... */
    uint32_t retryable;  /**< 1: the same may succeed if it is tried again */
    uint32_t exit_code;  /**< of the console tool for this failure */
    uint32_t errors;     /**< number of errors that belong to no element */
    uint32_t faults;     /**< number of sentences of the last prepare or preflight */
    uint32_t reserved;   /**< 0 */
    const char* message; /**< why, in one line; empty if nothing failed */
    const char* run;     /**< id of the run in the journal; empty if there is none */
} kvr_outcome;

/** Fills `outcome`. At any time, also within a callback. */
KVR_API int32_t KVR_CALL kvr_session_get_outcome(kvr_session* session, kvr_outcome* outcome);

/** `text` receives a sentence of the last prepare (how a saved plan differs) or preflight. */
KVR_API int32_t KVR_CALL kvr_session_get_fault(kvr_session* session, uint32_t index, const char** text);

/** An error that the device access libraries have reported. */
typedef struct kvr_error {
    uint32_t size;        /**< of the record, as the caller knows it (rule 3) */
    uint32_t code;        /**< number of the error */
    uint32_t origin_node; /**< serial number of the node that has reported it; 0: the host */
    uint32_t line;        /**< 0: not known */
    const char* text;     /**< for people */
    const char* function; /**< empty: not known */
} kvr_error;

/** Fills `error` with an error that belongs to no element: of the outcome that kvr_session_get_outcome() has given
   last. KVR_ERROR_ORDER before. */
KVR_API int32_t KVR_CALL kvr_session_get_error(kvr_session* session, uint32_t index, kvr_error* error);

/** Results of elements. */
enum {
    KVR_RESULT_NOT_PLANNED = 0,
    KVR_RESULT_NOT_STARTED = 1,
    KVR_RESULT_FILE_MISSING = 2, /**< its update file was missing when its phase began */
    KVR_RESULT_CANCELLED = 3,    /**< an earlier update on the same board has failed */
    KVR_RESULT_FAILED = 4,
    KVR_RESULT_UPDATED = 5,
    KVR_RESULT_IN_PROGRESS = 6 /**< the session ended while it was under way */
};

/** Calls of the device access libraries that make an element fail. */
enum {
    KVR_FAILED_CALL_NONE = 0,
    KVR_FAILED_CALL_TRANSFER_FILE = 1,
    KVR_FAILED_CALL_UPDATE2 = 2,
    KVR_FAILED_CALL_UPDATE_STATUS2 = 3,
    KVR_FAILED_CALL_UPDATE_ERRORS2 = 4,
    KVR_FAILED_CALL_WRITE_FILE = 5
};

/** Outcome of an element. */
typedef struct kvr_element_result {
    uint32_t size;         /**< of the record, as the caller knows it (rule 3) */
    uint32_t result;       /**< KVR_RESULT_... */
    uint32_t failed_call;  /**< KVR_FAILED_CALL_... */
    uint32_t known;        /**< KVR_KNOWS_STATE */
    uint32_t state;        /**< last answer of the target: 1 running, 2 succeeded, anything else failed */
    uint32_t file_changed; /**< 1: its update file has changed while it was used */
    uint32_t errors;       /**< number of its errors */
    uint32_t reserved;     /**< 0 */
    const char* reason;    /**< why it failed or was not started; empty otherwise */
} kvr_element_result;

/** Fills `result` with what has become of the element of this index. At any time, also within a callback. */
KVR_API int32_t KVR_CALL kvr_session_get_result(kvr_session* session, uint32_t element, kvr_element_result* result);

/** Fills `error` with an error of an element: of the result that kvr_session_get_result() has given last for it.
   KVR_ERROR_ORDER before. */
KVR_API int32_t KVR_CALL kvr_session_get_element_error(kvr_session* session, uint32_t element, uint32_t index,
                                                       kvr_error* error);

/** Judgements on elements. */
enum {
    KVR_VERIFIED_NOT_LISTED = 0, /**< a file that the inventory does not list */
    KVR_VERIFIED_GONE = 1,       /**< the target does not list it any more */
    KVR_VERIFIED_AS_EXPECTED = 2,
    KVR_VERIFIED_NOT_JUDGED = 3, /**< neither version nor checksum can be compared */
    KVR_VERIFIED_UNCHANGED = 4,  /**< it reports what it reported before; it may change at a reboot */
    KVR_VERIFIED_DIFFERS = 5
};

/** The last verification of a session. */
typedef struct kvr_verification {
    uint32_t size;       /**< of the record, as the caller knows it (rule 3) */
    uint32_t failure;    /**< KVR_FAILURE_... */
    uint32_t elements;   /**< number of elements that were judged */
    uint32_t errors;     /**< number of errors that the look has collected */
    const char* message; /**< why it failed; empty otherwise */
} kvr_verification;

/** Fills `verification`. KVR_ERROR_ORDER before kvr_verify(). */
KVR_API int32_t KVR_CALL kvr_session_get_verification(kvr_session* session, kvr_verification* verification);

/** An element beside what the target reports of it. */
typedef struct kvr_verified_element {
    uint32_t size;         /**< of the record, as the caller knows it (rule 3) */
    uint32_t element;      /**< index in the plan */
    uint32_t result;       /**< KVR_VERIFIED_... */
    uint32_t known;        /**< KVR_KNOWS_VERSION, _CHECKSUM, _VALID, _ACTIVE of what the target reports */
    uint32_t checksum;     /**< CRC-32 of what is installed */
    uint32_t valid;        /**< 1: what is installed is complete */
    uint32_t active;       /**< 1: the board runs what is installed */
    uint32_t file_changed; /**< 1: its update file has changed: nobody knows what was installed */
    const char* version;   /**< of what is installed */
} kvr_verified_element;

/** Fills `verified` with an item of the last verification. */
KVR_API int32_t KVR_CALL kvr_session_get_verified(kvr_session* session, uint32_t index, kvr_verified_element* verified);

/** Fills `error` with an error that the look of the last verification has collected. */
KVR_API int32_t KVR_CALL kvr_session_get_look_error(kvr_session* session, uint32_t index, kvr_error* error);

/** Documents of a session: JSON as the console tool writes it. */
enum {
    KVR_DOCUMENT_PLAN = 0,
    KVR_DOCUMENT_UPDATE = 1,
    KVR_DOCUMENT_VERIFY = 2,
    KVR_DOCUMENT_REBOOT = 3,
    KVR_DOCUMENT_ELEMENTS = 4,
    KVR_DOCUMENT_EXPLAIN = 5,   /**< of all elements, each with the entries that were tried */
    KVR_DOCUMENT_SAVED_PLAN = 6 /**< for kvr_session_options.saved_plan; 1 if the session has not planned, or a file
                                   of the plan cannot be read: kvr_last_error() states which */
};

/** `text` receives a document (KVR_DOCUMENT_...) of the session as it stands. */
KVR_API int32_t KVR_CALL kvr_session_get_document(kvr_session* session, uint32_t kind, const char** text);

/* --- archives ---------------------------------------------------------------------------------------------------- */

/** Options of an archive. */
typedef struct kvr_archive_options {
    uint32_t size;            /**< of the record, as the caller knows it (rule 3) */
    uint32_t flags;           /**< KVR_RELEASE, KVR_ACCEPT_UNSEALED */
    const char* archive;      /**< folder or package */
    const char* description;  /**< file name of its description; empty: "archive.json" */
    const char* trust_folder; /**< empty: nobody is trusted */
} kvr_archive_options;

/** Makes an archive. Nothing is read yet. `archive` receives the handle, and null if the result is negative. */
KVR_API int32_t KVR_CALL kvr_archive_create(const kvr_archive_options* options, kvr_archive** archive);
/** Ends an archive. */
KVR_API int32_t KVR_CALL kvr_archive_free(kvr_archive* archive);

/** Reads the archive as a session does. 0: it is accepted. 1: it is refused. */
KVR_API int32_t KVR_CALL kvr_archive_read(kvr_archive* archive);

/** Guarantees for the content of an archive. */
enum {
    KVR_SEAL_NONE = 0,               /**< it has no manifest */
    KVR_SEAL_SEALED = 1,             /**< it is what its manifest says; nobody has signed that */
    KVR_SEAL_SIGNED_BY_STRANGER = 2, /**< by a key that is not trusted here */
    KVR_SEAL_TRUSTED = 3             /**< by somebody who is trusted */
};

/** The content of an archive. */
typedef struct kvr_archive_info {
    uint32_t size;               /**< of the record, as the caller knows it (rule 3) */
    uint32_t entries;            /**< number of accepted entries */
    uint32_t failure;            /**< KVR_FAILURE_ARCHIVE, or KVR_FAILURE_NONE */
    uint32_t seal;               /**< KVR_SEAL_...; with KVR_RELEASE or a trust folder */
    const char* message;         /**< why it is refused; empty otherwise */
    const char* archive_name;    /**< these are the information of the description */
    const char* archive_version; /**< of the whole release */
    const char* product_name;    /**< product that the archive updates */
    const char* format_version;  /**< of the description */
    const char* archive_variant; /**< may be empty */
    const char* manifest_digest; /**< SHA-256 of the manifest in hexadecimal digits; this and the rest may be empty */
    const char* created;         /**< when it was sealed, RFC 3339 */
    const char* signer;          /**< who has signed it, as the trust folder calls them */
    const char* key_fingerprint; /**< of the key that counts */
} kvr_archive_info;

/** Fills `info`. KVR_ERROR_ORDER before kvr_archive_read(). */
KVR_API int32_t KVR_CALL kvr_archive_get_info(kvr_archive* archive, kvr_archive_info* info);
/** Fills `entry` with the accepted entry of this index. */
KVR_API int32_t KVR_CALL kvr_archive_get_entry(kvr_archive* archive, uint32_t index, kvr_entry* entry);

/** Looks for everything that is wrong or surprising. `findings` (may be null) receives the number. 0: nothing is wrong,
   there may be warnings. 1: there are errors. */
KVR_API int32_t KVR_CALL kvr_archive_check(kvr_archive* archive, uint32_t* findings);

/** Something that is to be said about an archive. */
typedef struct kvr_finding {
    uint32_t size;       /**< of the record, as the caller knows it (rule 3) */
    uint32_t severity;   /**< 0: error, 1: warning */
    uint32_t line;       /**< place in the description, from 1 */
    uint32_t column;     /**< place in its line, from 1 */
    const char* code;    /**< kind of finding; docs/archive-check.md lists them */
    const char* path;    /**< JSON path of the value */
    const char* message; /**< the mistake or surprise, for people */
    const char* hint;    /**< advice; may be empty */
} kvr_finding;

/** Fills `finding` with an item of the last kvr_archive_check(). */
KVR_API int32_t KVR_CALL kvr_archive_get_finding(kvr_archive* archive, uint32_t index, kvr_finding* finding);

/** Compares an archive with an older one. `places` (may be null) receives the number of places of both. 0: both were
   read; differences are a success. 1: one of them is refused, and kvr_last_error() says why. The result belongs to
   `archive`. */
KVR_API int32_t KVR_CALL kvr_archive_compare(kvr_archive* archive, kvr_archive* older, uint32_t* places);

/** Changes from an older archive. */
enum {
    KVR_CHANGE_SAME = 0,
    KVR_CHANGE_ADDED = 1,   /**< only the new archive has an entry */
    KVR_CHANGE_REMOVED = 2, /**< only the old archive has an entry */
    KVR_CHANGE_UP = 3,
    KVR_CHANGE_DOWN = 4,
    KVR_CHANGE_CHANGED = 5 /**< the versions are equal or not known, and something else differs */
};

/** A place, on boards of a type, for which one of two archives has an entry. */
typedef struct kvr_change {
    uint32_t size;              /**< of the record, as the caller knows it (rule 3) */
    uint32_t change;            /**< KVR_CHANGE_... */
    uint32_t element_id;        /**< 0 for a file */
    uint32_t content_changed;   /**< 1: other checksums, or not known */
    uint32_t rules_changed;     /**< 1: for other boards or elements */
    uint32_t sequence_changed;  /**< 1: of another phase */
    const char* board_type;     /**< boards that the place is on */
    const char* target_path;    /**< of a file */
    const char* version_before; /**< empty: no entry, or it states none */
    const char* version_after;  /**< as version_before, of the new archive */
} kvr_change;

/** Fills `change` with an item of the last kvr_archive_compare(). */
KVR_API int32_t KVR_CALL kvr_archive_get_change(kvr_archive* archive, uint32_t index, kvr_change* change);

/** Documents of an archive. */
enum {
    KVR_DOCUMENT_CONTENT = 0, /**< after kvr_archive_read() */
    KVR_DOCUMENT_CHECK = 1,   /**< after kvr_archive_check() */
    KVR_DOCUMENT_COMPARE = 2  /**< after kvr_archive_compare() */
};

/** `text` receives a document of the archive. KVR_ERROR_ORDER before the function that it depends on. */
KVR_API int32_t KVR_CALL kvr_archive_get_document(kvr_archive* archive, uint32_t kind, const char** text);

/* --- saved plans and runs ---------------------------------------------------------------------------------------- */

/** A saved plan, in short. */
typedef struct kvr_saved_plan {
    uint32_t size;              /**< of the record, as the caller knows it (rule 3) */
    uint32_t changes;           /**< elements and files that it changes */
    const char* id;             /**< texts of this record last until the next call of this thread */
    const char* time;           /**< when it was planned, RFC 3339 */
    const char* target;         /**< as it was given */
    const char* target_address; /**< IPv4, in dotted form */
    const char* archive;        /**< where the archive was */
    const char* tool_version;   /**< of the program that has planned */
} kvr_saved_plan;

/** Fills `plan` from the content of a saved plan. 1, with `plan` untouched, if it is not one or was changed;
   kvr_last_error() says why. Any thread. */
KVR_API int32_t KVR_CALL kvr_read_saved_plan(const char* content, kvr_saved_plan* plan);

/** Lists the runs of a journal. `runs` receives the handle, and null if the result is negative. `count` (may be null)
   receives their number, 0 if the folder is missing. */
KVR_API int32_t KVR_CALL kvr_runs_create(const char* journal_folder, kvr_runs** runs, uint32_t* count);
/** Gives a list of runs back. */
KVR_API int32_t KVR_CALL kvr_runs_free(kvr_runs* runs);

/** States of runs. */
enum {
    KVR_RUN_RUNNING = 0,
    KVR_RUN_COMPLETE = 1,  /**< it has come to its end, whatever came of it */
    KVR_RUN_STOPPED = 2,   /**< it was ended on request */
    KVR_RUN_BROKEN_OFF = 3 /**< its process has ended in the middle */
};

/** A run, in short. */
typedef struct kvr_run_info {
    uint32_t size;              /**< of the record, as the caller knows it (rule 3) */
    uint32_t state;             /**< KVR_RUN_... */
    uint32_t failure;           /**< KVR_FAILURE_... that the run has written at its end */
    uint32_t exit_code;         /**< that the run has written at its end */
    uint32_t resumable;         /**< 1: it did not come to its end, and no other run has gone on with it */
    uint32_t reserved;          /**< 0 */
    const char* id;             /**< for kvr_session_options.resumed_run */
    const char* command;        /**< "update" or "reboot" */
    const char* begin;          /**< RFC 3339, UTC */
    const char* end;            /**< empty: not written */
    const char* target;         /**< as it was given */
    const char* target_address; /**< IPv4, in dotted form */
    const char* archive;        /**< path of the archive */
    const char* user;           /**< who has started it */
    const char* computer;       /**< where it was started */
    const char* message;        /**< why it failed; empty otherwise */
    const char* plan;           /**< id of the saved plan that it has run; empty: none */
    const char* fault;          /**< why its file is not to be trusted from some line on; empty: it is whole */
} kvr_run_info;

/** Fills `run`, from the oldest to the newest. */
KVR_API int32_t KVR_CALL kvr_runs_get(kvr_runs* runs, uint32_t index, kvr_run_info* run);

/** `text` receives the document of one run; of the list if `id` is null or empty. 1 if the run is missing or
   cannot be read: kvr_last_error() and the document state why. */
KVR_API int32_t KVR_CALL kvr_runs_get_document(kvr_runs* runs, const char* id, const char** text);

#ifdef __cplusplus
}
#endif

/* NOLINTEND(modernize-deprecated-headers, modernize-use-using) */

#endif
