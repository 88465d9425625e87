// The C interface: cones of variables.

#include "kalvo/interface/entry.h"

#include <algorithm>

using namespace klv;

static constexpr const char* item = "cone";

KLVrescode_t KLV_appendcone (KLVtask_t task, int32_t type, double parameter, int32_t count,
                             const int32_t* members)
{
    return load (task, count, [&] (Task& t) {
        const std::int32_t number = t.problem ().cone.count ();
        check_append (1, number, item);
        if (type < 0 || type >= KLV_CONE_COUNT)
            refuse (KLV_RES_CONE_TYPE_UNKNOWN, "Cone ", std::int64_t{number} + 1, " (index ", number,
                    ") has the type ", type, "; types are 0 to ", KLV_CONE_COUNT - 1, ".");
        check_count (count, "members of a cone");
        if (const auto fault = cone_fault (type, parameter, count))
            refuse (KLV_RES_ARGUMENT, "Cone ", std::int64_t{number} + 1, " (index ", number, "): ", *fault,
                    ".");
        const auto given = array (members, count, "members");
        for (std::size_t k = 0; k < given.size (); ++k)
            if (given[k] < 0 || given[k] >= t.problem ().variables ())
                refuse (KLV_RES_CONE_MEMBER, "Member ", k + 1, " of cone ", std::int64_t{number} + 1,
                        " (index ", number, ") has the index ", given[k], ", but there are ",
                        t.problem ().variables (), " variables.");
        Problem& problem = t.edit_problem ();
        if (const std::int64_t again = problem.cone.prepare (given, problem.variables ()); again >= 0) {
            const std::int32_t variable = given[static_cast<std::size_t> (again)];
            const std::int32_t other = problem.cone.cone_of[static_cast<std::size_t> (variable)];
            refuse (KLV_RES_DUPLICATE_ENTRY, "Member ", again + 1, " of cone ", std::int64_t{number} + 1,
                    " (index ", number, "), ", describe_variable (problem, variable), ", is in ",
                    other >= 0 ? describe (item, other, problem.cone_name.get (other)) : "the cone twice",
                    other >= 0 ? " already." : ".");
        }
        problem.cone.append (type, parameter, given);
        t.drop_solutions ();
    });
}

KLVrescode_t KLV_getnumcone (KLVtask_t task, int32_t* count)
{
    return give (task, count, "count", [] (const Problem& problem) { return problem.cone.count (); });
}

KLVrescode_t KLV_getnumconemem (KLVtask_t task, int32_t k, int32_t* count)
{
    return give (task, count, "count", [&] (const Problem& problem) {
        check_index (k, problem.cone.count (), item);
        return problem.cone.members (k).size ();
    });
}

KLVrescode_t KLV_getcone (KLVtask_t task, int32_t k, int32_t* type, double* parameter, int32_t* count,
                          int32_t* members)
{
    return read (task, [&] (Task& t) {
        const Cones& cones = t.problem ().cone;
        check_index (k, cones.count (), item);
        std::int32_t& type_place = output (type, "type");
        double& parameter_place = output (parameter, "parameter");
        std::int32_t& count_place = output (count, "count");
        const auto found = cones.members (k);
        std::ranges::copy (found, array (members, std::ssize (found), "members").begin ());
        type_place = cones.type[static_cast<std::size_t> (k)];
        parameter_place = cones.parameter[static_cast<std::size_t> (k)];
        count_place = static_cast<std::int32_t> (found.size ());
    });
}

KLVrescode_t KLV_putconename (KLVtask_t task, int32_t k, const char* name)
{
    return load (task, 0, [&] (Task& t) {
        put_name (t, &Problem::cone_name, k, t.problem ().cone.count (), item, name);
    });
}

KLVrescode_t KLV_getconename (KLVtask_t task, int32_t k, int32_t size, char* name)
{
    return read (task, [&] (Task& t) {
        check_index (k, t.problem ().cone.count (), item);
        return give_text (t.problem ().cone_name.get (k), size, name, "name");
    });
}
