#include "kalvo/tables/constants.h"

#include "kalvo/include/kalvo.h"
#include "kalvo/tables/rows.h"

namespace klv {

static constexpr auto table = std::to_array<Constant> ({
    {Group::bound_key, "KLV_BK_LO", KLV_BK_LO, "A lower bound only."},
    {Group::bound_key, "KLV_BK_UP", KLV_BK_UP, "An upper bound only."},
    {Group::bound_key, "KLV_BK_FX", KLV_BK_FX, "Fixed: both bounds are one value."},
    {Group::bound_key, "KLV_BK_FR", KLV_BK_FR, "Free: no bound."},
    {Group::bound_key, "KLV_BK_RA", KLV_BK_RA, "A lower and an upper bound."},

    {Group::sense, "KLV_SENSE_MINIMIZE", KLV_SENSE_MINIMIZE, "The objective is minimised."},
    {Group::sense, "KLV_SENSE_MAXIMIZE", KLV_SENSE_MAXIMIZE, "The objective is maximised."},

    {Group::variable_type, "KLV_VAR_CONTINUOUS", KLV_VAR_CONTINUOUS, "A continuous variable."},
    {Group::variable_type, "KLV_VAR_INTEGER", KLV_VAR_INTEGER, "A variable that takes whole values only."},

    {Group::cone_type, "KLV_CONE_QUADRATIC", KLV_CONE_QUADRATIC, "x1 is at least the norm of x2 ... xn."},
    {Group::cone_type, "KLV_CONE_ROTATED_QUADRATIC", KLV_CONE_ROTATED_QUADRATIC,
     "2 x1 x2 is at least the squared norm of x3 ... xn; x1 and x2 are not negative."},
    {Group::cone_type, "KLV_CONE_PRIMAL_EXPONENTIAL", KLV_CONE_PRIMAL_EXPONENTIAL,
     "x1 is at least x2 exp (x3 / x2), x2 is not negative."},
    {Group::cone_type, "KLV_CONE_DUAL_EXPONENTIAL", KLV_CONE_DUAL_EXPONENTIAL,
     "The dual of the primal exponential cone."},
    {Group::cone_type, "KLV_CONE_PRIMAL_POWER", KLV_CONE_PRIMAL_POWER,
     "x1^a x2^(1 - a) is at least the norm of x3 ... xn; x1 and x2 are not negative."},
    {Group::cone_type, "KLV_CONE_DUAL_POWER", KLV_CONE_DUAL_POWER, "The dual of the primal power cone."},
    {Group::cone_type, "KLV_CONE_ZERO", KLV_CONE_ZERO, "All members are 0."},

    {Group::domain_type, "KLV_DOMAIN_FREE", KLV_DOMAIN_FREE, "Any values."},
    {Group::domain_type, "KLV_DOMAIN_ZERO", KLV_DOMAIN_ZERO, "All entries are 0."},
    {Group::domain_type, "KLV_DOMAIN_NONNEGATIVE", KLV_DOMAIN_NONNEGATIVE, "No entry is negative."},
    {Group::domain_type, "KLV_DOMAIN_NONPOSITIVE", KLV_DOMAIN_NONPOSITIVE, "No entry is positive."},
    {Group::domain_type, "KLV_DOMAIN_QUADRATIC_CONE", KLV_DOMAIN_QUADRATIC_CONE,
     "x1 is at least the norm of x2 ... xn."},
    {Group::domain_type, "KLV_DOMAIN_ROTATED_QUADRATIC_CONE", KLV_DOMAIN_ROTATED_QUADRATIC_CONE,
     "2 x1 x2 is at least the squared norm of x3 ... xn; x1 and x2 are not negative."},
    {Group::domain_type, "KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE", KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE,
     "x1 is at least x2 exp (x3 / x2), x2 is not negative."},
    {Group::domain_type, "KLV_DOMAIN_DUAL_EXPONENTIAL_CONE", KLV_DOMAIN_DUAL_EXPONENTIAL_CONE,
     "The dual of the primal exponential cone."},
    {Group::domain_type, "KLV_DOMAIN_PRIMAL_POWER_CONE", KLV_DOMAIN_PRIMAL_POWER_CONE,
     "x1^b1 ... xk^bk, with exponents of sum 1, is at least the norm of the rest; x1 ... xk are not "
     "negative."},
    {Group::domain_type, "KLV_DOMAIN_DUAL_POWER_CONE", KLV_DOMAIN_DUAL_POWER_CONE,
     "The dual of the primal power cone."},
    {Group::domain_type, "KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE", KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE,
     "The geometric mean of x1 ... xn-1, which are not negative, is at least the magnitude of xn."},
    {Group::domain_type, "KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE", KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE,
     "The dual of the primal geometric mean cone."},
    {Group::domain_type, "KLV_DOMAIN_SEMIDEFINITE_CONE", KLV_DOMAIN_SEMIDEFINITE_CONE,
     "The lower triangle, by columns, of a positive semidefinite matrix; entries off the diagonal times sqrt "
     "(2)."},

    {Group::solution, "KLV_SOL_ITR", KLV_SOL_ITR, "The interior solution."},
    {Group::solution, "KLV_SOL_BAS", KLV_SOL_BAS, "The basic solution."},
    {Group::solution, "KLV_SOL_INT", KLV_SOL_INT, "The integer solution."},

    {Group::problem_status, "KLV_PRO_UNKNOWN", KLV_PRO_UNKNOWN, "Nothing is known of the problem."},
    {Group::problem_status, "KLV_PRO_FEASIBLE", KLV_PRO_FEASIBLE,
     "Primal and dual feasible: it has an optimum."},
    {Group::problem_status, "KLV_PRO_PRIMAL_FEASIBLE", KLV_PRO_PRIMAL_FEASIBLE, "Primal feasible."},
    {Group::problem_status, "KLV_PRO_DUAL_FEASIBLE", KLV_PRO_DUAL_FEASIBLE,
     "Dual feasible: bounded, if feasible."},
    {Group::problem_status, "KLV_PRO_PRIMAL_INFEASIBLE", KLV_PRO_PRIMAL_INFEASIBLE, "No point is feasible."},
    {Group::problem_status, "KLV_PRO_DUAL_INFEASIBLE", KLV_PRO_DUAL_INFEASIBLE,
     "Unbounded, if feasible at all."},
    {Group::problem_status, "KLV_PRO_BOTH_INFEASIBLE", KLV_PRO_BOTH_INFEASIBLE,
     "Primal and dual infeasible."},
    {Group::problem_status, "KLV_PRO_INFEASIBLE_BY_SEARCH", KLV_PRO_INFEASIBLE_BY_SEARCH,
     "An integer search ended without a point: taken as infeasible, not certified."},

    {Group::solution_status, "KLV_SOLSTA_UNKNOWN", KLV_SOLSTA_UNKNOWN, "Nothing was verified."},
    {Group::solution_status, "KLV_SOLSTA_OPTIMAL", KLV_SOLSTA_OPTIMAL, "Optimal within the tolerances."},
    {Group::solution_status, "KLV_SOLSTA_FEASIBLE", KLV_SOLSTA_FEASIBLE,
     "Primal and dual feasible; the gap is above its tolerance."},
    {Group::solution_status, "KLV_SOLSTA_PRIMAL_FEASIBLE", KLV_SOLSTA_PRIMAL_FEASIBLE, "Primal feasible."},
    {Group::solution_status, "KLV_SOLSTA_DUAL_FEASIBLE", KLV_SOLSTA_DUAL_FEASIBLE, "Dual feasible."},
    {Group::solution_status, "KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE",
     KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE, "The duals prove that no point is feasible."},
    {Group::solution_status, "KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE", KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE,
     "The primal values are a direction of unbounded improvement."},
    {Group::solution_status, "KLV_SOLSTA_INTEGER_OPTIMAL", KLV_SOLSTA_INTEGER_OPTIMAL,
     "An integer point that is optimal within the gap parameters."},

    {Group::status_key, "KLV_SK_UNKNOWN", KLV_SK_UNKNOWN, "Not known."},
    {Group::status_key, "KLV_SK_BASIC", KLV_SK_BASIC, "Basic."},
    {Group::status_key, "KLV_SK_SUPERBASIC", KLV_SK_SUPERBASIC, "Between its bounds, not basic."},
    {Group::status_key, "KLV_SK_LOWER", KLV_SK_LOWER, "At its lower bound."},
    {Group::status_key, "KLV_SK_UPPER", KLV_SK_UPPER, "At its upper bound."},
    {Group::status_key, "KLV_SK_FIXED", KLV_SK_FIXED, "Fixed: both bounds are one value."},
    {Group::status_key, "KLV_SK_INFEASIBLE", KLV_SK_INFEASIBLE, "Outside its bounds."},

    {Group::on_off, "KLV_OFF", KLV_OFF, "Off."},
    {Group::on_off, "KLV_ON", KLV_ON, "On."},

    {Group::optimizer, "KLV_OPTIMIZER_PRIMAL_SIMPLEX", KLV_OPTIMIZER_PRIMAL_SIMPLEX,
     "The primal simplex method."},
    {Group::optimizer, "KLV_OPTIMIZER_DUAL_SIMPLEX", KLV_OPTIMIZER_DUAL_SIMPLEX, "The dual simplex method."},
    {Group::optimizer, "KLV_OPTIMIZER_AUTOMATIC", KLV_OPTIMIZER_AUTOMATIC, "The library chooses."},
    {Group::optimizer, "KLV_OPTIMIZER_INTERIOR_POINT", KLV_OPTIMIZER_INTERIOR_POINT,
     "The interior-point method."},
    {Group::optimizer, "KLV_OPTIMIZER_CONIC", KLV_OPTIMIZER_CONIC, "The optimiser for conic problems."},
    {Group::optimizer, "KLV_OPTIMIZER_MIXED_INTEGER", KLV_OPTIMIZER_MIXED_INTEGER,
     "The optimiser for problems with integer variables."},

    {Group::presolve, "KLV_PRESOLVE_OFF", KLV_PRESOLVE_OFF, "The problem is solved as it was stated."},
    {Group::presolve, "KLV_PRESOLVE_ON", KLV_PRESOLVE_ON, "The problem is made smaller first."},
    {Group::presolve, "KLV_PRESOLVE_AUTOMATIC", KLV_PRESOLVE_AUTOMATIC, "The optimiser chooses."},

    {Group::worker, "KLV_WORKER_OFF", KLV_WORKER_OFF,
     "In the calling process: a stop waits for the optimiser."},
    {Group::worker, "KLV_WORKER_ON", KLV_WORKER_ON, "In a process of their own where one can be had."},
    {Group::worker, "KLV_WORKER_AUTOMATIC", KLV_WORKER_AUTOMATIC,
     "As KLV_WORKER_ON, but not in builds with sanitizers."},

    {Group::scaling, "KLV_SCALING_OFF", KLV_SCALING_OFF, "Coefficients are taken as they are."},
    {Group::scaling, "KLV_SCALING_AUTOMATIC", KLV_SCALING_AUTOMATIC, "The optimiser chooses."},
    {Group::scaling, "KLV_SCALING_EQUILIBRATION", KLV_SCALING_EQUILIBRATION,
     "Rows and columns, where it helps."},
    {Group::scaling, "KLV_SCALING_FORCED_EQUILIBRATION", KLV_SCALING_FORCED_EQUILIBRATION,
     "Rows and columns, always."},
    {Group::scaling, "KLV_SCALING_MAXIMUM_VALUE", KLV_SCALING_MAXIMUM_VALUE, "By the largest coefficient."},

    {Group::pricing, "KLV_PRICING_AUTOMATIC", KLV_PRICING_AUTOMATIC, "The optimiser chooses."},
    {Group::pricing, "KLV_PRICING_DANTZIG", KLV_PRICING_DANTZIG, "The largest infeasibility."},
    {Group::pricing, "KLV_PRICING_DEVEX", KLV_PRICING_DEVEX, "Approximate steepest edge."},
    {Group::pricing, "KLV_PRICING_STEEPEST_EDGE", KLV_PRICING_STEEPEST_EDGE,
     "Steepest edge in the dual method, its approximation in the primal one."},

    {Group::interior_method, "KLV_INTPNT_METHOD_AUTOMATIC", KLV_INTPNT_METHOD_AUTOMATIC,
     "The optimiser chooses."},
    {Group::interior_method, "KLV_INTPNT_METHOD_ITERATIVE", KLV_INTPNT_METHOD_ITERATIVE,
     "By conjugate gradients, with a basis as preconditioner."},
    {Group::interior_method, "KLV_INTPNT_METHOD_FACTORIZATION", KLV_INTPNT_METHOD_FACTORIZATION,
     "By a factorisation in each step."},

    {Group::newton_system, "KLV_NEWTON_AUTOMATIC", KLV_NEWTON_AUTOMATIC, "The optimiser chooses."},
    {Group::newton_system, "KLV_NEWTON_AUGMENTED", KLV_NEWTON_AUGMENTED, "The augmented system."},
    {Group::newton_system, "KLV_NEWTON_NORMAL_EQUATIONS", KLV_NEWTON_NORMAL_EQUATIONS,
     "The normal equations."},

    {Group::ordering, "KLV_ORDERING_AUTOMATIC", KLV_ORDERING_AUTOMATIC, "The optimiser chooses."},
    {Group::ordering, "KLV_ORDERING_MINIMUM_DEGREE", KLV_ORDERING_MINIMUM_DEGREE,
     "Approximate minimum degree."},
    {Group::ordering, "KLV_ORDERING_NESTED_DISSECTION", KLV_ORDERING_NESTED_DISSECTION, "Nested dissection."},
    {Group::ordering, "KLV_ORDERING_CUTHILL_MCKEE", KLV_ORDERING_CUTHILL_MCKEE, "Reverse Cuthill-McKee."},

    {Group::factorization, "KLV_FACTORIZATION_AUTOMATIC", KLV_FACTORIZATION_AUTOMATIC,
     "The optimiser chooses."},
    {Group::factorization, "KLV_FACTORIZATION_SIMPLICIAL", KLV_FACTORIZATION_SIMPLICIAL, "Row by row."},
    {Group::factorization, "KLV_FACTORIZATION_SUPERNODAL", KLV_FACTORIZATION_SUPERNODAL,
     "By dense blocks of columns of like structure."},

    {Group::dualization, "KLV_DUALIZE_OFF", KLV_DUALIZE_OFF, "The problem is solved as it is."},
    {Group::dualization, "KLV_DUALIZE_ON", KLV_DUALIZE_ON, "Its dual is solved."},
    {Group::dualization, "KLV_DUALIZE_AUTOMATIC", KLV_DUALIZE_AUTOMATIC, "The optimiser chooses."},

    {Group::relaxation, "KLV_RELAXATION_AUTOMATIC", KLV_RELAXATION_AUTOMATIC, "The optimiser chooses."},
    {Group::relaxation, "KLV_RELAXATION_SIMPLEX", KLV_RELAXATION_SIMPLEX, "By the simplex method."},
    {Group::relaxation, "KLV_RELAXATION_INTERIOR_POINT", KLV_RELAXATION_INTERIOR_POINT,
     "By the interior-point method."},

    {Group::file_format, "KLV_FILE_BY_EXTENSION", KLV_FILE_BY_EXTENSION,
     "The file's extension names the format."},
    {Group::file_format, "KLV_FILE_FREE_MPS", KLV_FILE_FREE_MPS, "MPS with fields separated by blanks."},
    {Group::file_format, "KLV_FILE_FIXED_MPS", KLV_FILE_FIXED_MPS, "MPS with fields in fixed columns."},
    {Group::file_format, "KLV_FILE_LP", KLV_FILE_LP, "LP, rows of named terms."},
    {Group::file_format, "KLV_FILE_JSON", KLV_FILE_JSON, "JSON, a whole task."},
    {Group::file_format, "KLV_FILE_CBF", KLV_FILE_CBF, "CBF, conic problems."},
    {Group::file_format, "KLV_FILE_SDPA", KLV_FILE_SDPA, "Sparse SDPA, semidefinite problems."},

    {Group::parameter_kind, "KLV_PAR_NONE", KLV_PAR_NONE, "No parameter."},
    {Group::parameter_kind, "KLV_PAR_DOUBLE", KLV_PAR_DOUBLE, "A parameter that holds a real number."},
    {Group::parameter_kind, "KLV_PAR_INTEGER", KLV_PAR_INTEGER, "A parameter that holds a whole number."},
    {Group::parameter_kind, "KLV_PAR_STRING", KLV_PAR_STRING, "A parameter that holds a text."},

    {Group::information_kind, "KLV_INF_DOUBLE", KLV_INF_DOUBLE, "An information item that is a real number."},
    {Group::information_kind, "KLV_INF_INTEGER", KLV_INF_INTEGER,
     "An information item that is a whole number."},

    {Group::conflict_kind, "KLV_CONFLICT_CONSTRAINT_LOWER", KLV_CONFLICT_CONSTRAINT_LOWER,
     "The lower bound of a constraint."},
    {Group::conflict_kind, "KLV_CONFLICT_CONSTRAINT_UPPER", KLV_CONFLICT_CONSTRAINT_UPPER,
     "The upper bound of a constraint."},
    {Group::conflict_kind, "KLV_CONFLICT_VARIABLE_LOWER", KLV_CONFLICT_VARIABLE_LOWER,
     "The lower bound of a variable."},
    {Group::conflict_kind, "KLV_CONFLICT_VARIABLE_UPPER", KLV_CONFLICT_VARIABLE_UPPER,
     "The upper bound of a variable."},

    {Group::stream, "KLV_STREAM_ALL", KLV_STREAM_ALL, "Everything."},
    {Group::stream, "KLV_STREAM_MESSAGES", KLV_STREAM_MESSAGES, "Progress, summaries and analyses."},
    {Group::stream, "KLV_STREAM_ERRORS", KLV_STREAM_ERRORS, "Errors."},
    {Group::stream, "KLV_STREAM_WARNINGS", KLV_STREAM_WARNINGS, "Warnings and errors."},

    {Group::caller, "KLV_CALLER_BEGIN_OPTIMIZE", KLV_CALLER_BEGIN_OPTIMIZE, "An optimisation begins."},
    {Group::caller, "KLV_CALLER_END_OPTIMIZE", KLV_CALLER_END_OPTIMIZE, "The answers are ready."},
    {Group::caller, "KLV_CALLER_PRESOLVE", KLV_CALLER_PRESOLVE, "The problem is being made smaller."},
    {Group::caller, "KLV_CALLER_PRIMAL_SIMPLEX", KLV_CALLER_PRIMAL_SIMPLEX, "In the primal simplex method."},
    {Group::caller, "KLV_CALLER_DUAL_SIMPLEX", KLV_CALLER_DUAL_SIMPLEX, "In the dual simplex method."},
    {Group::caller, "KLV_CALLER_INTERIOR_POINT", KLV_CALLER_INTERIOR_POINT, "In the interior-point method."},
    {Group::caller, "KLV_CALLER_CROSSOVER", KLV_CALLER_CROSSOVER,
     "An interior solution is being turned into a basic one."},
    {Group::caller, "KLV_CALLER_MIXED_INTEGER", KLV_CALLER_MIXED_INTEGER, "In the integer search."},
    {Group::caller, "KLV_CALLER_NEW_INCUMBENT", KLV_CALLER_NEW_INCUMBENT,
     "A better integer point was found."},
    {Group::caller, "KLV_CALLER_CERTIFICATE", KLV_CALLER_CERTIFICATE,
     "A certificate of infeasibility is being looked for."},
    {Group::caller, "KLV_CALLER_CHECK", KLV_CALLER_CHECK, "The answers are being checked."},
    {Group::caller, "KLV_CALLER_BEGIN_READ", KLV_CALLER_BEGIN_READ, "Reading of a problem file begins."},
    {Group::caller, "KLV_CALLER_READ", KLV_CALLER_READ, "A problem file is being read."},
    {Group::caller, "KLV_CALLER_END_READ", KLV_CALLER_END_READ, "The problem file was read."},
    {Group::caller, "KLV_CALLER_BEGIN_WRITE", KLV_CALLER_BEGIN_WRITE, "Writing of a problem file begins."},
    {Group::caller, "KLV_CALLER_WRITE", KLV_CALLER_WRITE, "A problem file is being written."},
    {Group::caller, "KLV_CALLER_END_WRITE", KLV_CALLER_END_WRITE, "The problem file was written."},
    {Group::caller, "KLV_CALLER_ANALYZE", KLV_CALLER_ANALYZE, "The problem is being analysed."},
    {Group::caller, "KLV_CALLER_LOAD", KLV_CALLER_LOAD, "A large problem is being loaded."},

    {Group::response, "KLV_RES_OK", KLV_RES_OK, "No error occurred."},
    {Group::response, "KLV_RES_OUT_OF_MEMORY", KLV_RES_OUT_OF_MEMORY, "There is not enough memory."},
    {Group::response, "KLV_RES_ARGUMENT", KLV_RES_ARGUMENT, "An argument or an input field is malformed."},
    {Group::response, "KLV_RES_ARGUMENT_LENGTH", KLV_RES_ARGUMENT_LENGTH, "A vector has the wrong length."},
    {Group::response, "KLV_RES_CONE_MEMBER", KLV_RES_CONE_MEMBER,
     "A cone has a member beyond the variables."},
    {Group::response, "KLV_RES_SYMBOL_UNKNOWN", KLV_RES_SYMBOL_UNKNOWN, "A text is not a symbolic constant."},
    {Group::response, "KLV_RES_STATUS_KEY_UNKNOWN", KLV_RES_STATUS_KEY_UNKNOWN,
     "A text is not a status key."},
    {Group::response, "KLV_RES_CONE_TYPE_UNKNOWN", KLV_RES_CONE_TYPE_UNKNOWN, "A cone has an unknown type."},
    {Group::response, "KLV_RES_BOUND_BEYOND_INFINITY", KLV_RES_BOUND_BEYOND_INFINITY,
     "A bound lies at or beyond infinity on the wrong side."},
    {Group::response, "KLV_RES_QOBJ_COLUMN_RANGE", KLV_RES_QOBJ_COLUMN_RANGE,
     "A quadratic term of the objective has a column beyond the variables."},
    {Group::response, "KLV_RES_QOBJ_ROW_RANGE", KLV_RES_QOBJ_ROW_RANGE,
     "A quadratic term of the objective has a row beyond the variables."},
    {Group::response, "KLV_RES_QCON_CONSTRAINT_RANGE", KLV_RES_QCON_CONSTRAINT_RANGE,
     "A quadratic term belongs to a constraint that does not exist."},
    {Group::response, "KLV_RES_QCON_ROW_RANGE", KLV_RES_QCON_ROW_RANGE,
     "A quadratic term of a constraint has a row beyond the variables."},
    {Group::response, "KLV_RES_QCON_COLUMN_RANGE", KLV_RES_QCON_COLUMN_RANGE,
     "A quadratic term of a constraint has a column beyond the variables."},

    {Group::response, "KLV_RES_NULL_HANDLE", KLV_RES_NULL_HANDLE, "A handle is null."},
    {Group::response, "KLV_RES_NULL_POINTER", KLV_RES_NULL_POINTER,
     "A pointer is null where data is needed."},
    {Group::response, "KLV_RES_INDEX_RANGE", KLV_RES_INDEX_RANGE,
     "An index or a range lies outside what exists."},
    {Group::response, "KLV_RES_VALUE_NOT_FINITE", KLV_RES_VALUE_NOT_FINITE,
     "A value is not a number, or infinite where it must be finite."},
    {Group::response, "KLV_RES_VALUE_UNKNOWN", KLV_RES_VALUE_UNKNOWN,
     "A number stands for nothing of its kind."},
    {Group::response, "KLV_RES_DUPLICATE_ENTRY", KLV_RES_DUPLICATE_ENTRY,
     "Something is named twice: a row in a column, or a variable in cones."},
    {Group::response, "KLV_RES_TOO_LARGE", KLV_RES_TOO_LARGE, "A size is beyond what can be handled."},
    {Group::response, "KLV_RES_BUFFER_TOO_SMALL", KLV_RES_BUFFER_TOO_SMALL,
     "A text does not fit its buffer."},
    {Group::response, "KLV_RES_PARAMETER_UNKNOWN", KLV_RES_PARAMETER_UNKNOWN, "There is no such parameter."},
    {Group::response, "KLV_RES_PARAMETER_RANGE", KLV_RES_PARAMETER_RANGE,
     "The value of a parameter is outside its range."},
    {Group::response, "KLV_RES_PARAMETER_RESERVED", KLV_RES_PARAMETER_RESERVED,
     "A reserved parameter accepts its default only."},
    {Group::response, "KLV_RES_SOLUTION_UNDEFINED", KLV_RES_SOLUTION_UNDEFINED,
     "The task does not hold that solution, or the solution does not have that part."},
    {Group::response, "KLV_RES_NOT_AVAILABLE", KLV_RES_NOT_AVAILABLE,
     "This version of the library can't do that."},
    {Group::response, "KLV_RES_TASK_BUSY", KLV_RES_TASK_BUSY,
     "A task can't be changed while one of its operations runs."},
    {Group::response, "KLV_RES_TASK_UNUSABLE", KLV_RES_TASK_UNUSABLE,
     "An internal failure made the task unusable; it can only be deleted."},
    {Group::response, "KLV_RES_STREAM_UNKNOWN", KLV_RES_STREAM_UNKNOWN, "There is no such message stream."},

    {Group::response, "KLV_RES_FILE_NAME_MISSING", KLV_RES_FILE_NAME_MISSING, "No file was named."},
    {Group::response, "KLV_RES_FILE_FORMAT_UNKNOWN", KLV_RES_FILE_FORMAT_UNKNOWN,
     "The format of a problem file is not known."},
    {Group::response, "KLV_RES_FILE_OPEN", KLV_RES_FILE_OPEN, "A file can't be opened."},
    {Group::response, "KLV_RES_FILE_READ", KLV_RES_FILE_READ, "A file can't be read."},
    {Group::response, "KLV_RES_FILE_SYNTAX", KLV_RES_FILE_SYNTAX,
     "A problem file breaks the rules of its format."},
    {Group::response, "KLV_RES_FILE_SECTION_UNSUPPORTED", KLV_RES_FILE_SECTION_UNSUPPORTED,
     "A problem file states something that this version of the library can't hold."},
    {Group::response, "KLV_RES_FILE_WRITE", KLV_RES_FILE_WRITE, "A file can't be written."},
    {Group::response, "KLV_RES_FILE_CANNOT_HOLD", KLV_RES_FILE_CANNOT_HOLD,
     "A file format can't hold a part of the problem."},

    {Group::response, "KLV_RES_ENGINE_MISSING", KLV_RES_ENGINE_MISSING, "A solver engine can't be loaded."},
    {Group::response, "KLV_RES_ENGINE_FAILED", KLV_RES_ENGINE_FAILED, "A solver engine failed."},
    {Group::response, "KLV_RES_THREAD_FAILED", KLV_RES_THREAD_FAILED, "A thread can't be started."},
    {Group::response, "KLV_RES_INTERNAL", KLV_RES_INTERNAL, "An internal failure of the library."},
    {Group::response, "KLV_RES_WORKER_MISSING", KLV_RES_WORKER_MISSING,
     "The program that optimisers run in is missing, or does not fit the library."},
    {Group::response, "KLV_RES_NOT_CONVEX", KLV_RES_NOT_CONVEX,
     "Quadratic terms bend the objective or a constraint the wrong way: the problem is not convex."},
    {Group::response, "KLV_RES_REPAIR_IMPOSSIBLE", KLV_RES_REPAIR_IMPOSSIBLE,
     "No movement of the bounds that may move makes the problem feasible."},

    {Group::response, "KLV_RES_TIME_LIMIT", KLV_RES_TIME_LIMIT, "The time limit was reached."},
    {Group::response, "KLV_RES_ITERATION_LIMIT", KLV_RES_ITERATION_LIMIT, "The iteration limit was reached."},
    {Group::response, "KLV_RES_NODE_LIMIT", KLV_RES_NODE_LIMIT, "The node limit was reached."},
    {Group::response, "KLV_RES_SOLUTION_LIMIT", KLV_RES_SOLUTION_LIMIT,
     "The limit of improving integer solutions was reached."},
    {Group::response, "KLV_RES_OBJECTIVE_LIMIT", KLV_RES_OBJECTIVE_LIMIT, "The objective limit was passed."},
    {Group::response, "KLV_RES_NUMERICAL_TROUBLE", KLV_RES_NUMERICAL_TROUBLE,
     "Numerical trouble ended the run before an answer was proved."},
    {Group::response, "KLV_RES_USER_STOP", KLV_RES_USER_STOP, "The user stopped the operation."},
});

struct Range {
    std::size_t first = 0;
    std::size_t count = 0;
};

// The rows of each group. A group whose rows are not adjacent, or whose values do not increase, does not compile.
static constexpr auto ranges = [] {
    std::array<Range, static_cast<std::size_t> (Group::count)> found{};
    for (std::size_t i = 0; i < table.size (); ++i) {
        Range& range = found[static_cast<std::size_t> (table[i].group)];
        if (range.count == 0)
            range.first = i;
        else if (table[i - 1].group != table[i].group || table[i - 1].value >= table[i].value)
            throw "a group's rows are apart or out of order";
        ++range.count;
    }
    return found;
}();

static constexpr auto by_name = order_by_name<table.size ()> (table);

std::span<const Constant> constants ()
{
    return table;
}

std::span<const Constant> constants (Group group)
{
    const Range range = ranges[static_cast<std::size_t> (group)];
    return std::span (table).subspan (range.first, range.count);
}

const Constant* find_constant (std::string_view name)
{
    const auto row = find_by_name (by_name, table, name);
    return row ? &table[static_cast<std::size_t> (*row)] : nullptr;
}

const Constant* find_constant (Group group, std::int32_t value)
{
    const auto rows = constants (group);
    const auto row = std::ranges::lower_bound (rows, value, {}, &Constant::value);
    return row != rows.end () && row->value == value ? &*row : nullptr;
}

std::string_view short_name (const Constant& constant)
{
    // KLV_SK_BASIC: the second underscore ends the prefix.
    const std::size_t prefix = constant.name.find ('_', constant.name.find ('_') + 1);
    return constant.name.substr (prefix + 1);
}

}
