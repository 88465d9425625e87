/* kalvo.h: the C interface of the Kalvo solver library, libkalvo64.
 *
 * Conventions
 * - Every operation returns a response code: 0 for success, KLV_FIRST_TERMINATION and above for a
 *   termination (the run ended before an optimum was proved; results can be read), anything else a failure
 *   that changed nothing unless its description says so. KLV_getcodedesc gives a code's name and description, and
 *   KLV_getlasterror the last message of a task. Operations that return something else say so.
 * - Handles: a null environment stands for the process-wide default environment, the only one there is.
 *   A null task gives KLV_RES_NULL_HANDLE, a null pointer where data is needed KLV_RES_NULL_POINTER, a wrong
 *   index or range KLV_RES_INDEX_RANGE. Pointers to zero entries may be null.
 * - Indices are 0-based. Variables, constraints, cones and semidefinite variables are passed in signed 32 bits,
 *   counts of entries, affine expressions, domains and affine conic constraints in signed 64 bits; there can be
 *   at most 2147483647 of each kind (KLV_RES_TOO_LARGE). A slice [first, last) covers the items first to
 *   last - 1.
 * - Ownership: arrays and texts that are passed in are copied and never kept; results are written into memory
 *   of the caller. Texts are 0-terminated UTF-8. Where a text buffer has no length argument it must
 *   hold KLV_MAX_TEXT bytes.
 * - Infinite bounds: the bound key says whether a bound exists; the value of an absent bound is ignored.
 * - Threads: a task is used by one thread at a time. All callbacks run on the thread that called the
 *   operation. While an operation runs, a callback may read the task but not change or delete it
 *   (KLV_RES_TASK_BUSY).
 * - An internal failure, or a callback that throws, gives KLV_RES_INTERNAL and makes the task unusable: it can
 *   only be asked for its last error and deleted; all other operations give KLV_RES_TASK_UNUSABLE.
 * - Changes of data leave the solutions as they are, until the next optimisation or until variables,
 *   constraints, cones or other items of a solution are added.
 * - No exceptions cross this interface, except those of the caller's own exit function.
 */
#ifndef KALVO_H
#define KALVO_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KLV_API __attribute__ ((visibility ("default")))
#else
#define KLV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum { KLV_VERSION_MAJOR = 10, KLV_VERSION_MINOR = 2, KLV_VERSION_REVISION = 18 };

// Size in bytes of text buffers whose length is not passed, the terminating 0 included.
enum { KLV_MAX_TEXT = 1024 };

typedef struct KLV_env* KLVenv_t;
typedef struct KLV_task* KLVtask_t;
typedef int32_t KLVrescode_t;

// Response codes. Their names and descriptions: KLV_getcodedesc.
enum KLVrescode {
    KLV_RES_OK = 0,

    KLV_RES_OUT_OF_MEMORY = 1051,
    KLV_RES_ARGUMENT = 1200,
    KLV_RES_ARGUMENT_LENGTH = 1201,
    KLV_RES_CONE_MEMBER = 1204,
    KLV_RES_SYMBOL_UNKNOWN = 1217,
    KLV_RES_STATUS_KEY_UNKNOWN = 1269,
    KLV_RES_CONE_TYPE_UNKNOWN = 1271,
    KLV_RES_BOUND_BEYOND_INFINITY = 1400,
    KLV_RES_QOBJ_COLUMN_RANGE = 1401,
    KLV_RES_QOBJ_ROW_RANGE = 1402,
    KLV_RES_QCON_CONSTRAINT_RANGE = 1404,
    KLV_RES_QCON_ROW_RANGE = 1405,
    KLV_RES_QCON_COLUMN_RANGE = 1406,

    KLV_RES_NULL_HANDLE = 3001,
    KLV_RES_NULL_POINTER = 3002,
    KLV_RES_INDEX_RANGE = 3003,
    KLV_RES_VALUE_NOT_FINITE = 3004,
    KLV_RES_VALUE_UNKNOWN = 3005,
    KLV_RES_DUPLICATE_ENTRY = 3006,
    KLV_RES_TOO_LARGE = 3007,
    KLV_RES_BUFFER_TOO_SMALL = 3008,
    KLV_RES_PARAMETER_UNKNOWN = 3009,
    KLV_RES_PARAMETER_RANGE = 3010,
    KLV_RES_PARAMETER_RESERVED = 3011,
    KLV_RES_SOLUTION_UNDEFINED = 3012,
    KLV_RES_NOT_AVAILABLE = 3013,
    KLV_RES_TASK_BUSY = 3014,
    KLV_RES_TASK_UNUSABLE = 3015,
    KLV_RES_STREAM_UNKNOWN = 3017,

    KLV_RES_FILE_NAME_MISSING = 3101,
    KLV_RES_FILE_FORMAT_UNKNOWN = 3102,
    KLV_RES_FILE_OPEN = 3103,
    KLV_RES_FILE_READ = 3104,
    KLV_RES_FILE_SYNTAX = 3105,
    KLV_RES_FILE_SECTION_UNSUPPORTED = 3106,
    KLV_RES_FILE_WRITE = 3107,
    KLV_RES_FILE_CANNOT_HOLD = 3108,

    KLV_RES_ENGINE_MISSING = 3201,
    KLV_RES_ENGINE_FAILED = 3202,
    KLV_RES_THREAD_FAILED = 3203,
    KLV_RES_INTERNAL = 3204,
    KLV_RES_WORKER_MISSING = 3205,
    KLV_RES_NOT_CONVEX = 3206,
    KLV_RES_REPAIR_IMPOSSIBLE = 3207,

    KLV_RES_TIME_LIMIT = 20001,
    KLV_RES_ITERATION_LIMIT = 20002,
    KLV_RES_NODE_LIMIT = 20003,
    KLV_RES_SOLUTION_LIMIT = 20004,
    KLV_RES_OBJECTIVE_LIMIT = 20005,
    KLV_RES_NUMERICAL_TROUBLE = 20006,

    KLV_RES_USER_STOP = 100007
};

enum { KLV_FIRST_TERMINATION = 9999 };

// Bound keys: which of the two bounds of a constraint or variable exist.
enum KLVboundkey { KLV_BK_LO = 0, KLV_BK_UP = 1, KLV_BK_FX = 2, KLV_BK_FR = 3, KLV_BK_RA = 4 };

// Which bound of a constraint or variable is a member of a conflict.
enum KLVconflictkind {
    KLV_CONFLICT_CONSTRAINT_LOWER = 0,
    KLV_CONFLICT_CONSTRAINT_UPPER = 1,
    KLV_CONFLICT_VARIABLE_LOWER = 2,
    KLV_CONFLICT_VARIABLE_UPPER = 3
};

enum KLVobjsense { KLV_SENSE_MINIMIZE = 0, KLV_SENSE_MAXIMIZE = 1 };

enum KLVvartype { KLV_VAR_CONTINUOUS = 0, KLV_VAR_INTEGER = 1 };

// Cones that variables x1 ... xn lie in; KLVdomaintype says what each is. A power cone has the exponents a and
// 1 - a for x1 and x2, a being the cone's parameter.
enum KLVconetype {
    KLV_CONE_QUADRATIC = 0,
    KLV_CONE_ROTATED_QUADRATIC = 1,
    KLV_CONE_PRIMAL_EXPONENTIAL = 2,
    KLV_CONE_DUAL_EXPONENTIAL = 3,
    KLV_CONE_PRIMAL_POWER = 4,
    KLV_CONE_DUAL_POWER = 5,
    KLV_CONE_ZERO = 6
};

// Domains of affine conic constraints, for x1 ... xn. Each dual cone is the dual of the one before it.
enum KLVdomaintype {
    KLV_DOMAIN_FREE = 0,
    KLV_DOMAIN_ZERO = 1,
    KLV_DOMAIN_NONNEGATIVE = 2,
    KLV_DOMAIN_NONPOSITIVE = 3,
    KLV_DOMAIN_QUADRATIC_CONE = 4,             // x1 >= |(x2 ... xn)|, n >= 1
    KLV_DOMAIN_ROTATED_QUADRATIC_CONE = 5,     // 2 x1 x2 >= |(x3 ... xn)|^2, x1, x2 >= 0, n >= 2
    KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE = 6,    // x1 >= x2 exp (x3 / x2), x2 >= 0 and its limits, n = 3
    KLV_DOMAIN_DUAL_EXPONENTIAL_CONE = 7,
    KLV_DOMAIN_PRIMAL_POWER_CONE = 8,    // x1^b1 ... xk^bk >= |(xk+1 ... xn)|, x1 ... xk >= 0, for k
                                         // exponents a > 0 and bi = ai / sum a, 1 <= k <= n
    KLV_DOMAIN_DUAL_POWER_CONE = 9,
    // (x1 ... xn-1)^(1 / (n - 1)) >= |xn|, x1 ... xn-1 >= 0, n >= 2
    KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE = 10,
    KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE = 11,
    KLV_DOMAIN_SEMIDEFINITE_CONE = 12    // positive semidefinite matrices: lower triangle column by column,
                                         // entries off the diagonal times sqrt (2)
};

// Numbers of types, which are counted from 0.
enum { KLV_CONE_COUNT = 7, KLV_DOMAIN_COUNT = 13 };

// Solutions of a task: interior, basic, integer.
enum KLVsoltype { KLV_SOL_ITR = 0, KLV_SOL_BAS = 1, KLV_SOL_INT = 2, KLV_SOL_COUNT = 3 };

// What is known of the problem.
enum KLVprosta {
    KLV_PRO_UNKNOWN = 0,
    KLV_PRO_FEASIBLE = 1,    // primal and dual feasible
    KLV_PRO_PRIMAL_FEASIBLE = 2,
    KLV_PRO_DUAL_FEASIBLE = 3,
    KLV_PRO_PRIMAL_INFEASIBLE = 4,
    KLV_PRO_DUAL_INFEASIBLE = 5,    // unbounded, if it is feasible at all
    KLV_PRO_BOTH_INFEASIBLE = 6,
    KLV_PRO_INFEASIBLE_BY_SEARCH = 7    // an integer search ended without a point; not certified
};

// What a solution is, by residuals that the library computed itself.
enum KLVsolsta {
    KLV_SOLSTA_UNKNOWN = 0,
    KLV_SOLSTA_OPTIMAL = 1,
    KLV_SOLSTA_FEASIBLE = 2,    // primal and dual feasible, gap above its tolerance
    KLV_SOLSTA_PRIMAL_FEASIBLE = 3,
    KLV_SOLSTA_DUAL_FEASIBLE = 4,
    KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE = 5,
    KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE = 6,
    KLV_SOLSTA_INTEGER_OPTIMAL = 7
};

// Status keys of constraints and variables.
enum KLVstakey {
    KLV_SK_UNKNOWN = 0,
    KLV_SK_BASIC = 1,
    KLV_SK_SUPERBASIC = 2,
    KLV_SK_LOWER = 3,
    KLV_SK_UPPER = 4,
    KLV_SK_FIXED = 5,
    KLV_SK_INFEASIBLE = 6
};

// From here to KLVfileformat: values of integer parameters.
enum KLVoptimizer {
    KLV_OPTIMIZER_PRIMAL_SIMPLEX = 0,
    KLV_OPTIMIZER_DUAL_SIMPLEX = 1,
    KLV_OPTIMIZER_AUTOMATIC = 2,
    KLV_OPTIMIZER_INTERIOR_POINT = 3,
    KLV_OPTIMIZER_CONIC = 4,
    KLV_OPTIMIZER_MIXED_INTEGER = 5
};

enum KLVswitch { KLV_OFF = 0, KLV_ON = 1 };

enum KLVpresolve { KLV_PRESOLVE_OFF = 0, KLV_PRESOLVE_ON = 1, KLV_PRESOLVE_AUTOMATIC = 2 };

// Where optimisers run; automatic: in a process of their own.
enum KLVworker { KLV_WORKER_OFF = 0, KLV_WORKER_ON = 1, KLV_WORKER_AUTOMATIC = 2 };

enum KLVscaling {
    KLV_SCALING_OFF = 0,
    KLV_SCALING_AUTOMATIC = 1,
    KLV_SCALING_EQUILIBRATION = 2,
    KLV_SCALING_FORCED_EQUILIBRATION = 3,
    KLV_SCALING_MAXIMUM_VALUE = 4
};

enum KLVpricing {
    KLV_PRICING_AUTOMATIC = 0,
    KLV_PRICING_DANTZIG = 1,
    KLV_PRICING_DEVEX = 2,
    KLV_PRICING_STEEPEST_EDGE = 3
};

// How the interior-point method solves its linear systems, and which ones.
enum KLVinteriormethod {
    KLV_INTPNT_METHOD_AUTOMATIC = 0,
    KLV_INTPNT_METHOD_ITERATIVE = 1,
    KLV_INTPNT_METHOD_FACTORIZATION = 2
};

enum KLVnewtonsystem { KLV_NEWTON_AUTOMATIC = 0, KLV_NEWTON_AUGMENTED = 1, KLV_NEWTON_NORMAL_EQUATIONS = 2 };

enum KLVordering {
    KLV_ORDERING_AUTOMATIC = 0,
    KLV_ORDERING_MINIMUM_DEGREE = 1,
    KLV_ORDERING_NESTED_DISSECTION = 2,
    KLV_ORDERING_CUTHILL_MCKEE = 3
};

// How the sparse matrices of quadratic and conic problems are factorised.
enum KLVfactorization {
    KLV_FACTORIZATION_AUTOMATIC = 0,
    KLV_FACTORIZATION_SIMPLICIAL = 1,
    KLV_FACTORIZATION_SUPERNODAL = 2
};

enum KLVdualization { KLV_DUALIZE_OFF = 0, KLV_DUALIZE_ON = 1, KLV_DUALIZE_AUTOMATIC = 2 };

enum KLVrelaxationmethod {
    KLV_RELAXATION_AUTOMATIC = 0,
    KLV_RELAXATION_SIMPLEX = 1,
    KLV_RELAXATION_INTERIOR_POINT = 2
};

enum KLVfileformat {
    KLV_FILE_BY_EXTENSION = 0,
    KLV_FILE_FREE_MPS = 1,
    KLV_FILE_FIXED_MPS = 2,
    KLV_FILE_LP = 3,
    KLV_FILE_JSON = 4,
    KLV_FILE_CBF = 5,
    KLV_FILE_SDPA = 6
};

// Kinds of parameters and of information items.
enum KLVparamtype { KLV_PAR_NONE = 0, KLV_PAR_DOUBLE = 1, KLV_PAR_INTEGER = 2, KLV_PAR_STRING = 3 };
enum KLVinftype { KLV_INF_DOUBLE = 0, KLV_INF_INTEGER = 1 };

// Sizes of the tables of parameters and information items.
enum {
    KLV_DOUBLE_PARAMETERS = 62,
    KLV_INTEGER_PARAMETERS = 190,
    KLV_STRING_PARAMETERS = 25,
    KLV_DOUBLE_INFORMATION = 111,
    KLV_INTEGER_INFORMATION = 117
};

// Parameters with a fixed number.
enum {
    KLV_DPAR_BOUND_INFINITY_NUMBER = 10,
    KLV_DPAR_FIXING_TOLERANCE_NUMBER = 15,
    KLV_SPAR_DATA_FILE_NUMBER = 1
};

/* Message streams: 0 carries everything; 1 messages (progress, summaries, analysis); 2 errors; 3 warnings and
 * errors. A function that is linked with one handle to several streams of a line receives the line once. Lines
 * that are printed while a function receives one go to files only. */
enum KLVstreamtype {
    KLV_STREAM_ALL = 0,
    KLV_STREAM_MESSAGES = 1,
    KLV_STREAM_ERRORS = 2,
    KLV_STREAM_WARNINGS = 3
};

/* Progress points: the caller code that a progress callback receives. The callback is called when a phase
 * begins, then at least once in 50 ms and at most once in 20 ms. */
enum KLVcallercode {
    KLV_CALLER_BEGIN_OPTIMIZE = 1,
    KLV_CALLER_END_OPTIMIZE = 2,
    KLV_CALLER_PRESOLVE = 3,
    KLV_CALLER_PRIMAL_SIMPLEX = 4,
    KLV_CALLER_DUAL_SIMPLEX = 5,
    KLV_CALLER_INTERIOR_POINT = 6,
    KLV_CALLER_CROSSOVER = 7,
    KLV_CALLER_MIXED_INTEGER = 8,
    KLV_CALLER_NEW_INCUMBENT = 9,
    KLV_CALLER_CERTIFICATE = 10,
    KLV_CALLER_CHECK = 11,
    KLV_CALLER_BEGIN_READ = 12,
    KLV_CALLER_READ = 13,
    KLV_CALLER_END_READ = 14,
    KLV_CALLER_BEGIN_WRITE = 15,
    KLV_CALLER_WRITE = 16,
    KLV_CALLER_END_WRITE = 17,
    KLV_CALLER_ANALYZE = 18,
    KLV_CALLER_LOAD = 19
};

/* Progress callback: 0 lets the operation go on, anything else asks it to end. The operation then returns
 * KLV_RES_USER_STOP, or KLV_RES_OUT_OF_MEMORY when that was the callback's answer. The last three pointers
 * are null in this version. */
typedef int32_t (*KLVcallbackfunc) (KLVtask_t task, void* handle, uint32_t caller, const double* douinf,
                                    const int32_t* intinf, const int64_t* lintinf);

// Receives the text of a stream, one whole line (its newline included) at a time.
typedef void (*KLVstreamfunc) (void* handle, const char* text);

// Receives an internal failure after which a task is unusable. It may leave by throwing.
typedef void (*KLVexitfunc) (void* handle, const char* file, int32_t line, const char* message);

// ---- Library and environment ----------------------------------------------------------------------------

/* The version of the loaded library; compare with the KLV_VERSION_ constants of this header. */
KLV_API KLVrescode_t KLV_getversion (int32_t* major, int32_t* minor, int32_t* revision);

// Prints the banner on environment streams 0 and 1: one line, then a line for each engine if longver > 0.
KLV_API KLVrescode_t KLV_echointro (KLVenv_t env, int32_t longver);

// Links a function to an environment stream (0 to 3), replacing the linked one; a null func unlinks.
KLV_API KLVrescode_t KLV_linkfunctoenvstream (KLVenv_t env, int32_t stream, void* handle, KLVstreamfunc func);

// Sets the function that is called, on the calling thread and with no lock held, when a task has become
// unusable; null: none.
KLV_API KLVrescode_t KLV_putexitfunc (KLVenv_t env, KLVexitfunc func, void* handle);

/* Symbolic name ("KLV_RES_...") and description of a response code; each buffer holds KLV_MAX_TEXT bytes,
 * either may be null. An unknown code gives a text that says so, and KLV_RES_VALUE_UNKNOWN. */
KLV_API KLVrescode_t KLV_getcodedesc (int32_t code, char* symname, char* description);

// Number of symbolic constants, and the length of the longest name without its terminator.
KLV_API KLVrescode_t KLV_getsymbcondim (KLVenv_t env, int32_t* count, size_t* longest);

// Symbolic constant number index (0 ... count - 1); name holds capacity bytes.
KLV_API KLVrescode_t KLV_getsymbcon (KLVtask_t task, int32_t index, int32_t capacity, char* name,
                                     int32_t* value);

// Returns 1 and writes the value as decimal text (KLV_MAX_TEXT bytes) if name is a symbolic constant, else 0.
KLV_API int32_t KLV_symnamtovalue (const char* name, char* value);

// The symbolic constant for a value of an integer parameter, or an empty text.
KLV_API KLVrescode_t KLV_iparvaltosymnam (KLVenv_t env, int32_t index, int32_t value, char* name);

// ---- Tasks, streams, callbacks --------------------------------------------------------------------------

/* Makes a task that holds an empty problem; the caller deletes it. On failure *task is null. */
KLV_API KLVrescode_t KLV_makeemptytask (KLVenv_t env, KLVtask_t* task);

// Deletes a task and sets *task to null. A null *task is no error.
KLV_API KLVrescode_t KLV_deletetask (KLVtask_t* task);

// Links a function to a task stream (0 to 3), replacing the linked one; a null func unlinks.
KLV_API KLVrescode_t KLV_linkfunctotaskstream (KLVtask_t task, int32_t stream, void* handle,
                                               KLVstreamfunc func);

/* Links a file to a task stream, beside a linked function and in place of the linked file: append 0 writes the
 * file anew, 1 appends. A null filename closes the linked file. A file that can't be opened gives
 * KLV_RES_FILE_OPEN, and the linked one stays; when writing fails later, the file is closed with one warning. */
KLV_API KLVrescode_t KLV_linkfiletotaskstream (KLVtask_t task, int32_t stream, const char* filename,
                                               int32_t append);

// Sets the progress callback of a task; a null func removes it.
KLV_API KLVrescode_t KLV_putcallbackfunc (KLVtask_t task, KLVcallbackfunc func, void* handle);

/* The last error of a task, also after later successes: code, length of the message, and the message cut to
 * capacity - 1 bytes. Without an error *code is 0, and *length and message are untouched. length may be null.
 * Terminations are no errors, nor is a call that was refused because the task was busy. */
KLV_API KLVrescode_t KLV_getlasterror (KLVtask_t task, int32_t* code, int32_t capacity, int32_t* length,
                                       char* message);

// The server to solve on. This version has none: KLV_RES_NOT_AVAILABLE for a host that is not empty.
KLV_API KLVrescode_t KLV_putoptserverhost (KLVtask_t task, const char* host);

// ---- Parameters and information -------------------------------------------------------------------------

/* Kind (KLVparamtype) and index of a parameter name; kind KLV_PAR_NONE when there is no such parameter. */
KLV_API KLVrescode_t KLV_whichparam (KLVtask_t task, const char* name, int32_t* kind, int32_t* index);

// Name of parameter number index of a kind (KLVparamtype).
KLV_API KLVrescode_t KLV_getparamname (KLVtask_t task, int32_t kind, int32_t index, char* name);

/* Sets a parameter: KLV_RES_PARAMETER_RANGE for a value outside the range (NaN included),
 * KLV_RES_PARAMETER_RESERVED for a reserved parameter and a value other than the default. The message names
 * the parameter. */
KLV_API KLVrescode_t KLV_putdouparam (KLVtask_t task, int32_t index, double value);
KLV_API KLVrescode_t KLV_putintparam (KLVtask_t task, int32_t index, int32_t value);
KLV_API KLVrescode_t KLV_putstrparam (KLVtask_t task, int32_t index, const char* value);
KLV_API KLVrescode_t KLV_putnaintparam (KLVtask_t task, const char* name, int32_t value);

KLV_API KLVrescode_t KLV_getdouparam (KLVtask_t task, int32_t index, double* value);
KLV_API KLVrescode_t KLV_getintparam (KLVtask_t task, int32_t index, int32_t* value);

// The text of a string parameter cut to capacity - 1 bytes, and its length. With capacity 0 value may be
// null.
KLV_API KLVrescode_t KLV_getstrparam (KLVtask_t task, int32_t index, int32_t capacity, int32_t* length,
                                      char* value);

// Name and value of information item number index; kind is a KLVinftype.
KLV_API KLVrescode_t KLV_getinfname (KLVtask_t task, int32_t kind, int32_t index, char* name);
KLV_API KLVrescode_t KLV_getdouinf (KLVtask_t task, int32_t index, double* value);
KLV_API KLVrescode_t KLV_getintinf (KLVtask_t task, int32_t index, int32_t* value);

// ---- Problem input ----------------------------------------------------------------------------------------

/* Appends count items. New variables are continuous, free, without cost and entries; new constraints are
 * free. */
KLV_API KLVrescode_t KLV_appendvars (KLVtask_t task, int32_t count);
KLV_API KLVrescode_t KLV_appendcons (KLVtask_t task, int32_t count);

// Makes room for entries of the constraint matrix; a hint that is never needed.
KLV_API KLVrescode_t KLV_putmaxnumanz (KLVtask_t task, int64_t maxnumanz);

/* Operations on variables and constraints ask the progress callback now and then (KLV_CALLER_LOAD); after an
 * answer other than 0 they change nothing and return KLV_RES_USER_STOP. */

/* Replaces column j of the constraint matrix: count entries, rows in any order, each row at most once, values
 * finite. Zeros are kept as entries. */
KLV_API KLVrescode_t KLV_putacol (KLVtask_t task, int32_t j, int32_t count, const int32_t* rows,
                                  const double* values);

/* Bounds of the items first ... last - 1; the arrays hold last - first entries. A bound that exists by its key
 * must not be NaN. A lower bound of -Inf and an upper one of Inf mean no bound, and the key is changed
 * accordingly; a lower bound of Inf and an upper one of -Inf give KLV_RES_BOUND_BEYOND_INFINITY. Lower values
 * above upper ones are accepted: such a problem is infeasible. The two values of a fixed item (KLV_BK_FX) must
 * be finite and equal, else KLV_RES_ARGUMENT. */
KLV_API KLVrescode_t KLV_putvarboundslice (KLVtask_t task, int32_t first, int32_t last, const int32_t* keys,
                                           const double* lower, const double* upper);
KLV_API KLVrescode_t KLV_putconboundslice (KLVtask_t task, int32_t first, int32_t last, const int32_t* keys,
                                           const double* lower, const double* upper);

// Costs of the variables first ... last - 1, and the constant term of the objective; all finite.
KLV_API KLVrescode_t KLV_putcslice (KLVtask_t task, int32_t first, int32_t last, const double* costs);
KLV_API KLVrescode_t KLV_putcfix (KLVtask_t task, double constant);

KLV_API KLVrescode_t KLV_putobjsense (KLVtask_t task, int32_t sense);
KLV_API KLVrescode_t KLV_putvartype (KLVtask_t task, int32_t j, int32_t type);

/* Quadratic terms: 1/2 x'Qx in the objective, and 1/2 x'Qx in a constraint, each Q symmetric. An entry of Q is
 * given once, in either triangle; entries that are given several times add up. Values are finite, their sums
 * too. Each operation replaces all terms of the objective, or of all constraints. Wrong indices:
 * KLV_RES_QOBJ_ROW_RANGE, _COLUMN_RANGE, KLV_RES_QCON_CONSTRAINT_RANGE, _ROW_RANGE, _COLUMN_RANGE. */
KLV_API KLVrescode_t KLV_putqobj (KLVtask_t task, int32_t count, const int32_t* rows, const int32_t* columns,
                                  const double* values);
KLV_API KLVrescode_t KLV_putqcon (KLVtask_t task, int32_t count, const int32_t* constraints,
                                  const int32_t* rows, const int32_t* columns, const double* values);

// The number of quadratic terms that will be put; a hint that is never needed.
KLV_API KLVrescode_t KLV_putmaxnumqnz (KLVtask_t task, int64_t maxnumqnz);

// Appends affine expressions Fx + g, all zero.
KLV_API KLVrescode_t KLV_appendafes (KLVtask_t task, int64_t count);

/* Replaces column j of F: count entries, expressions in any order, each at most once, values finite. Zeros are
 * kept as entries. */
KLV_API KLVrescode_t KLV_putafefcol (KLVtask_t task, int32_t j, int64_t count, const int64_t* expressions,
                                     const double* values);

// Constants g of the expressions first ... last - 1; finite.
KLV_API KLVrescode_t KLV_putafegslice (KLVtask_t task, int64_t first, int64_t last, const double* values);

/* Make a domain (KLVdomaintype) of the given size and write its index. A size that such a domain can't have, and
 * exponents that are not positive and finite or more than the size: KLV_RES_ARGUMENT. */
KLV_API KLVrescode_t KLV_appendrdomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendrzerodomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendrplusdomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendrminusdomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendquadraticconedomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendrquadraticconedomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendprimalexpconedomain (KLVtask_t task, int64_t* domain);
KLV_API KLVrescode_t KLV_appenddualexpconedomain (KLVtask_t task, int64_t* domain);
KLV_API KLVrescode_t KLV_appendprimalpowerconedomain (KLVtask_t task, int64_t size, int64_t count,
                                                      const double* exponents, int64_t* domain);
KLV_API KLVrescode_t KLV_appenddualpowerconedomain (KLVtask_t task, int64_t size, int64_t count,
                                                    const double* exponents, int64_t* domain);
KLV_API KLVrescode_t KLV_appendprimalgeomeanconedomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appenddualgeomeanconedomain (KLVtask_t task, int64_t size, int64_t* domain);
KLV_API KLVrescode_t KLV_appendsvecpsdconedomain (KLVtask_t task, int64_t size, int64_t* domain);

/* Appends an affine conic constraint: the expressions first ... first + size - 1, minus b, lie in a domain of that
 * size. b: size finite values, or null for zeros. An expression may be in several constraints. */
KLV_API KLVrescode_t KLV_appendaccseq (KLVtask_t task, int64_t domain, int64_t size, int64_t first,
                                       const double* b);

/* Appends a cone of variables. An unknown type: KLV_RES_CONE_TYPE_UNKNOWN; a number of members that such a cone
 * can't have, a parameter that is not finite, or that of a power cone outside (0, 1): KLV_RES_ARGUMENT; a member
 * that is no variable: KLV_RES_CONE_MEMBER; one that is in a cone already: KLV_RES_DUPLICATE_ENTRY. Power cones
 * have two members at least. The parameter of other cones is kept, without meaning. */
KLV_API KLVrescode_t KLV_appendcone (KLVtask_t task, int32_t type, double parameter, int32_t count,
                                     const int32_t* members);

/* Semidefinite variables: symmetric matrices of these orders (0 and more), positive semidefinite. Their lower
 * triangles have 2147483647 entries at most, all together. */
KLV_API KLVrescode_t KLV_appendbarvars (KLVtask_t task, int32_t count, const int32_t* orders);

// Makes room for semidefinite variables; a hint that is never needed.
KLV_API KLVrescode_t KLV_putmaxnumbarvar (KLVtask_t task, int32_t maxnumbarvar);

/* Linear terms of semidefinite variables: entry (rows[k], columns[k]) of the symmetric coefficient matrix of
 * variable variables[k] is values[k]. It is given once, in the lower triangle (row >= column, else
 * KLV_RES_ARGUMENT); entries that are given several times add up. Values are finite, their sums too. Each
 * operation replaces all such terms of the objective, of all constraints, of all affine expressions. */
KLV_API KLVrescode_t KLV_putbarcblocktriplet (KLVtask_t task, int64_t count, const int32_t* variables,
                                              const int32_t* rows, const int32_t* columns,
                                              const double* values);
KLV_API KLVrescode_t KLV_putbarablocktriplet (KLVtask_t task, int64_t count, const int32_t* constraints,
                                              const int32_t* variables, const int32_t* rows,
                                              const int32_t* columns, const double* values);
KLV_API KLVrescode_t KLV_putafebarfblocktriplet (KLVtask_t task, int64_t count, const int64_t* expressions,
                                                 const int32_t* variables, const int32_t* rows,
                                                 const int32_t* columns, const double* values);

// Names. Any text without a 0 byte is kept as it is; an empty name is no name.
KLV_API KLVrescode_t KLV_puttaskname (KLVtask_t task, const char* name);
KLV_API KLVrescode_t KLV_putobjname (KLVtask_t task, const char* name);
KLV_API KLVrescode_t KLV_putvarname (KLVtask_t task, int32_t j, const char* name);
KLV_API KLVrescode_t KLV_putconname (KLVtask_t task, int32_t i, const char* name);
KLV_API KLVrescode_t KLV_putconename (KLVtask_t task, int32_t k, const char* name);
KLV_API KLVrescode_t KLV_putbarvarname (KLVtask_t task, int32_t j, const char* name);
KLV_API KLVrescode_t KLV_putaccname (KLVtask_t task, int64_t k, const char* name);

// ---- Problem output ---------------------------------------------------------------------------------------

/* Counts. Quadratic terms of the objective and of constraint i; affine conic constraints, and the rows of all of
 * them; disjunctive constraints, of which there are none in this version. */
KLV_API KLVrescode_t KLV_getnumvar (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getnumcon (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getnumcone (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getnumbarvar (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getnumintvar (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getnumanz (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getnumqobjnz (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getnumqconknz (KLVtask_t task, int32_t i, int64_t* count);
KLV_API KLVrescode_t KLV_getnumacc (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getaccntot (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getnumdjc (KLVtask_t task, int64_t* count);

// The order of semidefinite variable j, and the number of entries of its lower triangle.
KLV_API KLVrescode_t KLV_getdimbarvarj (KLVtask_t task, int32_t j, int32_t* dimension);
KLV_API KLVrescode_t KLV_getlenbarvarj (KLVtask_t task, int32_t j, int64_t* length);

// Costs of all variables; the array must hold one entry for each.
KLV_API KLVrescode_t KLV_getc (KLVtask_t task, double* costs);
KLV_API KLVrescode_t KLV_getcfix (KLVtask_t task, double* constant);

/* Column j of the constraint matrix, entries in the order in which they were put. The arrays must have room for
 * all of them: at most one for each constraint. */
KLV_API KLVrescode_t KLV_getacol (KLVtask_t task, int32_t j, int32_t* count, int32_t* rows, double* values);

/* Quadratic terms of the objective and of constraint i: lower triangles by column and row, each place once. room
 * is the size of the arrays: KLV_RES_BUFFER_TOO_SMALL when there are more terms. */
KLV_API KLVrescode_t KLV_getqobj (KLVtask_t task, int64_t room, int64_t* count, int32_t* rows,
                                  int32_t* columns, double* values);
KLV_API KLVrescode_t KLV_getqconk (KLVtask_t task, int32_t i, int64_t room, int64_t* count, int32_t* rows,
                                   int32_t* columns, double* values);

// A cone: type, parameter, and its members in order; count of them, for which members has room.
KLV_API KLVrescode_t KLV_getnumconemem (KLVtask_t task, int32_t k, int32_t* count);
KLV_API KLVrescode_t KLV_getcone (KLVtask_t task, int32_t k, int32_t* type, double* parameter, int32_t* count,
                                  int32_t* members);

// A domain: type, size, and of a power cone the number of exponents and the exponents. A domain of another
// type has no exponents.
KLV_API KLVrescode_t KLV_getdomaintype (KLVtask_t task, int64_t domain, int32_t* type);
KLV_API KLVrescode_t KLV_getdomainn (KLVtask_t task, int64_t domain, int64_t* size);
KLV_API KLVrescode_t KLV_getpowerdomaininfo (KLVtask_t task, int64_t domain, int64_t* size, int64_t* count);
KLV_API KLVrescode_t KLV_getpowerdomainalpha (KLVtask_t task, int64_t domain, double* exponents);

/* All affine conic constraints: the domain of each, and for each of their rows, constraint after constraint, the
 * expression and b. */
KLV_API KLVrescode_t KLV_getaccs (KLVtask_t task, int64_t* domains, int64_t* expressions, double* b);

/* The expressions of those rows: their constants g, and the entries of F and their number. Columns come one after
 * another. */
KLV_API KLVrescode_t KLV_getaccgvector (KLVtask_t task, double* values);
KLV_API KLVrescode_t KLV_getaccfnumnz (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getaccftrip (KLVtask_t task, int64_t* rows, int32_t* columns, double* values);

/* Terms of semidefinite variables in the objective, the constraints, and the rows of the affine conic
 * constraints, and their number: by item, variable, column and row, each place once. room is the size of the
 * arrays: KLV_RES_BUFFER_TOO_SMALL when there are more terms. */
KLV_API KLVrescode_t KLV_getnumbarcblocktriplets (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getnumbarablocktriplets (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getaccbarfnumblocktriplets (KLVtask_t task, int64_t* count);
KLV_API KLVrescode_t KLV_getbarcblocktriplet (KLVtask_t task, int64_t room, int64_t* count,
                                              int32_t* variables, int32_t* rows, int32_t* columns,
                                              double* values);
KLV_API KLVrescode_t KLV_getbarablocktriplet (KLVtask_t task, int64_t room, int64_t* count,
                                              int32_t* constraints, int32_t* variables, int32_t* rows,
                                              int32_t* columns, double* values);
KLV_API KLVrescode_t KLV_getaccbarfblocktriplet (KLVtask_t task, int64_t room, int64_t* count,
                                                 int64_t* accrows, int32_t* variables, int32_t* rows,
                                                 int32_t* columns, double* values);

// Bound key and values of one item; the value of an absent bound is infinite.
KLV_API KLVrescode_t KLV_getvarbound (KLVtask_t task, int32_t j, int32_t* key, double* lower, double* upper);
KLV_API KLVrescode_t KLV_getconbound (KLVtask_t task, int32_t i, int32_t* key, double* lower, double* upper);

KLV_API KLVrescode_t KLV_getvartype (KLVtask_t task, int32_t j, int32_t* type);
KLV_API KLVrescode_t KLV_getobjsense (KLVtask_t task, int32_t* sense);

// Lengths of names without terminator: of the task, of the objective, and of the longest name of any item.
KLV_API KLVrescode_t KLV_gettasknamelen (KLVtask_t task, int32_t* length);
KLV_API KLVrescode_t KLV_getobjnamelen (KLVtask_t task, int32_t* length);
KLV_API KLVrescode_t KLV_getmaxnamelen (KLVtask_t task, int32_t* length);

// Copy a name into a buffer of size bytes. A name that does not fit is cut and terminated, with
// KLV_RES_BUFFER_TOO_SMALL.
KLV_API KLVrescode_t KLV_gettaskname (KLVtask_t task, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getobjname (KLVtask_t task, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getvarname (KLVtask_t task, int32_t j, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getconname (KLVtask_t task, int32_t i, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getconename (KLVtask_t task, int32_t k, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getbarvarname (KLVtask_t task, int32_t j, int32_t size, char* name);
KLV_API KLVrescode_t KLV_getaccname (KLVtask_t task, int64_t k, int32_t size, char* name);

// ---- Files and analysis -----------------------------------------------------------------------------------

/* Reads a problem file into an empty task. A null filename stands for the string parameter KLV_SPAR_DATA_FILE.
 * A fault is reported on the error stream with its line; the task then holds an empty problem.
 * A JSON file holds a whole task (docs/json.md). Parameters that have their default in the task are set from the
 * file, except the data file and the file format. Solutions are taken as by KLV_putsolutionnew: the next
 * optimisation starts there, and statuses follow from the values. */
KLV_API KLVrescode_t KLV_readdata (KLVtask_t task, const char* filename);

/* Writes the problem to a file, in the format that the parameter KLV_IPAR_FILE_FORMAT or the extension names. After
 * a failure an existing file is as it was. */
KLV_API KLVrescode_t KLV_writedata (KLVtask_t task, const char* filename);

// Prints a short summary of the problem, or its analysis (kinds of bounds, density, coefficient ranges), on a
// stream.
KLV_API KLVrescode_t KLV_readsummary (KLVtask_t task, int32_t stream);
KLV_API KLVrescode_t KLV_analyzeproblem (KLVtask_t task, int32_t stream);

// ---- Optimisation -----------------------------------------------------------------------------------------

/* Solves the problem. Infeasible and unbounded are answers, not failures: the code is 0. Limits and stops
 * give their termination code. With KLV_IPAR_WARM_START the task's solutions are the start: a basis, else a
 * point for the simplex methods, known values of the integer solution for the integer search. A bad start
 * costs time, never the answer. Afterwards the task holds the new solutions only. Quadratic terms that
 * are not convex give KLV_RES_NOT_CONVEX; integer variables together with quadratic terms, affine conic constraints,
 * cones or semidefinite variables KLV_RES_NOT_AVAILABLE in this version. */
KLV_API KLVrescode_t KLV_optimize (KLVtask_t task);

/* Brings the problem into conic form, which a problem without quadratic terms already has. Quadratic terms of the objective
 * become those of a new last variable t, whose cost is 1 (maximising, -1): (t, 1, F x) lies in a rotated quadratic cone,
 * F'F being the matrix (or minus it). A constraint a'x + 1/2 x'Qx <= u has (u - a'x, 1, F x) there, one with a lower bound l
 * (a'x - l, 1, F x); semidefinite terms go with a'x. The constraint stays, with its linear terms and without bounds.
 * Quadratic terms of constraints without bounds, and terms that are 0, go. Cones of variables become affine conic constraints
 * behind these. The objective's sense must be put before. Solutions are dropped.
 *   KLV_RES_NOT_CONVEX   the terms of the objective, or of a constraint in the direction of its bound, are not convex, or the
 *                        constraint has two bounds; the problem is left as it was */
KLV_API KLVrescode_t KLV_toconic (KLVtask_t task);

/* Repairs an infeasible problem: moves bounds so that the weighted sum of the amounts is the smallest with which there is a
 * feasible point. Weights: one for each constraint (wlc: lower bounds, wuc: upper ones) and variable (wlx, wux), null: all are 1.
 * A bound of weight 0 moves at no cost, one of negative weight does not move. Cones, matrices and integrality stay. The moved
 * bounds are in the task then: KLV_DINF_REPAIR_SUM, KLV_IINF_REPAIRED_BOUNDS. All else leaves the problem as it was:
 *   KLV_RES_ARGUMENT            a weight is NaN or infinite
 *   KLV_RES_REPAIR_IMPOSSIBLE   no movement of the bounds that may move makes the problem feasible
 *   and what KLV_optimize returns when it proves no optimum, terminations included. */
KLV_API KLVrescode_t KLV_primalrepair (KLVtask_t task, const double* wlc, const double* wuc,
                                       const double* wlx, const double* wux);

/* Bounds that contradict each other, found by the last analysis of an infeasible problem, or by its last optimisation if its
 * messages went anywhere (none are found for a feasible one, and with KLV_DPAR_CONFLICT_TIME_LIMIT 0): their number, and for each a KLVconflictkind and the constraint or
 * variable. Cones, matrices and integrality hold beside them. room is the size of the arrays: KLV_RES_BUFFER_TOO_SMALL when
 * there are more members. KLV_IINF_CONFLICT_IRREDUCIBLE is 1 when the others can hold without any one of them. */
KLV_API KLVrescode_t KLV_getnumconflict (KLVtask_t task, int32_t* count);
KLV_API KLVrescode_t KLV_getconflict (KLVtask_t task, int32_t room, int32_t* kinds, int32_t* items);

// Print on a stream: a summary of the solutions, and one of the optimisation's course.
KLV_API KLVrescode_t KLV_solutionsummary (KLVtask_t task, int32_t stream);
KLV_API KLVrescode_t KLV_optimizersummary (KLVtask_t task, int32_t stream);

// ---- Solutions --------------------------------------------------------------------------------------------
/* which is a KLVsoltype. A solution that is not defined: KLV_RES_SOLUTION_UNDEFINED. Dual signs, minimising:
 * y = slc - suc, c - A'y = slx - sux (+ snx), slc, suc, slx, sux >= 0; maximising, all signs are reversed. */

/* *defined is 1 when the task holds that solution, else 0. */
KLV_API KLVrescode_t KLV_solutiondef (KLVtask_t task, int32_t which, int32_t* defined);

KLV_API KLVrescode_t KLV_getprosta (KLVtask_t task, int32_t which, int32_t* status);
KLV_API KLVrescode_t KLV_getsolsta (KLVtask_t task, int32_t which, int32_t* status);

// The objective c'x plus the constant, and the bound on the optimum that the duals prove.
KLV_API KLVrescode_t KLV_getprimalobj (KLVtask_t task, int32_t which, double* value);
KLV_API KLVrescode_t KLV_getdualobj (KLVtask_t task, int32_t which, double* value);

/* Slices [first, last) over constraints (skc, xc, y, slc, suc) or variables (skx, xx, slx, sux, snx), into
 * arrays of last - first entries. The integer solution has no duals: KLV_RES_SOLUTION_UNDEFINED. */
KLV_API KLVrescode_t KLV_getskcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      int32_t* keys);
KLV_API KLVrescode_t KLV_getskxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      int32_t* keys);
KLV_API KLVrescode_t KLV_getxcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                     double* values);
KLV_API KLVrescode_t KLV_getxxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                     double* values);
KLV_API KLVrescode_t KLV_getyslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                    double* values);
KLV_API KLVrescode_t KLV_getslcslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      double* values);
KLV_API KLVrescode_t KLV_getsucslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      double* values);
KLV_API KLVrescode_t KLV_getslxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      double* values);
KLV_API KLVrescode_t KLV_getsuxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      double* values);
KLV_API KLVrescode_t KLV_getsnxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                      double* values);

/* Keys of all cones; values and duals of the semidefinite variables first ... last - 1, whose lower triangles
 * stand one after another, column by column (length is the size of the array); duals of all rows of affine conic
 * constraints. Only the interior solution has such values: unknown keys and zeros for the basic one. */
KLV_API KLVrescode_t KLV_getskn (KLVtask_t task, int32_t which, int32_t* keys);
KLV_API KLVrescode_t KLV_getbarxslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                       int64_t length, double* values);
KLV_API KLVrescode_t KLV_getbarsslice (KLVtask_t task, int32_t which, int32_t first, int32_t last,
                                       int64_t length, double* values);
KLV_API KLVrescode_t KLV_getaccdotys (KLVtask_t task, int32_t which, double* values);

/* Puts a solution, for the next optimisation to start from (KLV_IPAR_WARM_START). Arrays that are not given are
 * null. skc, xc, y, slc, suc have one entry for each constraint; skx, xx, slx, sux one for each variable. NaN is
 * an unknown value; infinite values (KLV_RES_VALUE_NOT_FINITE) and numbers that are no key are refused.
 * The task keeps given values as they are, except that when all of xx is known, xc is computed from xx; and when
 * all multipliers are known, slc and suc are computed from y (a missing y is slc - suc), and slx and sux from
 * their difference (if missing, from y). Statuses follow from these values and the problem. A certificate in the
 * form in which the library returns it is one again, once it is verified. The integer solution has no duals and
 * no proof of optimality: its status is at most PRIMAL_FEASIBLE. Of the interior solution, skn has one entry for
 * each cone, snx one for each variable, doty one for each row of the affine conic constraints. Once a matrix
 * is put, statuses are unknown until the last one is. Multipliers prove nothing where quadratic terms are not convex. */
KLV_API KLVrescode_t KLV_putsolutionnew (KLVtask_t task, int32_t which, const int32_t* skc,
                                         const int32_t* skx, const int32_t* skn, const double* xc,
                                         const double* xx, const double* y, const double* slc,
                                         const double* suc, const double* slx, const double* sux,
                                         const double* snx, const double* doty);

/* Put the values, or the duals, of semidefinite variable j of the interior solution, which must be there: its
 * lower triangle column by column, finite or NaN. Of other solutions they are ignored. */
KLV_API KLVrescode_t KLV_putbarxj (KLVtask_t task, int32_t which, int32_t j, const double* values);
KLV_API KLVrescode_t KLV_putbarsj (KLVtask_t task, int32_t which, int32_t j, const double* values);

// Texts of statuses and keys (KLV_MAX_TEXT bytes). Any other number gives an empty text and
// KLV_RES_VALUE_UNKNOWN.
KLV_API KLVrescode_t KLV_prostatostr (KLVtask_t task, int32_t status, char* text);
KLV_API KLVrescode_t KLV_solstatostr (KLVtask_t task, int32_t status, char* text);
KLV_API KLVrescode_t KLV_sktostr (KLVtask_t task, int32_t key, char* text);

// The key with the given text; its first two characters are enough. Else KLV_RES_STATUS_KEY_UNKNOWN.
KLV_API KLVrescode_t KLV_strtosk (KLVtask_t task, const char* text, int32_t* key);

#ifdef __cplusplus
}
#endif

#endif
