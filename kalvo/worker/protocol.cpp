#include "kalvo/worker/protocol.h"

#include "kalvo/tables/constants.h"

#include <algorithm>
#include <memory>

namespace klv {

// ---- Parts of messages -----------------------------------------------------------------------------------------------------------

static void write (Writer& to, const Parameters& parameters)
{
    to.put_array (std::span<const double> (parameters.doubles));
    to.put_array (std::span<const std::int32_t> (parameters.integers));
    for (const std::string& text : parameters.texts)
        to.put_text (text);
}

static void read (Reader& from, Parameters& parameters)
{
    from.get_exactly (parameters.doubles);
    from.get_exactly (parameters.integers);
    for (std::string& text : parameters.texts)
        text = from.get_text ();
}

static void write (Writer& to, const Information& information)
{
    to.put_array (std::span<const double> (information.doubles));
    to.put_array (std::span<const std::int32_t> (information.integers));
}

static void read (Reader& from, Information& information)
{
    from.get_exactly (information.doubles);
    from.get_exactly (information.integers);
}

static void write (Writer& to, const Bounds& bounds)
{
    to.put_array (bounds.key);
    to.put_array (bounds.lower);
    to.put_array (bounds.upper);
}

static void read (Reader& from, Bounds& bounds)
{
    from.get_into (bounds.key);
    from.get_into (bounds.lower);
    from.get_into (bounds.upper);
    if (bounds.lower.size () != bounds.key.size () || bounds.upper.size () != bounds.key.size ())
        throw BrokenMessage ("bounds have different lengths");
}

static void write (Writer& to, const ColumnMatrix& matrix)
{
    to.put_array (matrix.starts ());
    to.put_array (matrix.rows ());
    to.put_array (matrix.values ());
}

// The matrix reads from the message.
static ColumnMatrix read_matrix (Reader& from, const std::shared_ptr<const void>& owner)
{
    const auto starts = from.get_array<std::int32_t> (), rows = from.get_array<std::int32_t> ();
    const auto values = from.get_array<double> ();
    if (starts.empty () || starts.front () != 0 ||
        static_cast<std::size_t> (starts.back ()) != values.size () || rows.size () != values.size ())
        throw BrokenMessage ("arrays of a matrix have different lengths");
    return {starts, rows, values, owner};
}

// The vectors of what a problem has beyond linear terms: `function` is called with each.
template <class SomeProblem, class Function>
static void each_further_vector (SomeProblem& problem, const Function& function)
{
    auto& bar = problem.semidefinite;
    for (auto* terms : {&problem.quadratic_objective, &problem.quadratic_constraint, &bar.objective,
                        &bar.constraint, &bar.expression}) {
        function (terms->item);
        function (terms->variable);
        function (terms->row);
        function (terms->column);
        function (terms->value);
    }
    function (problem.affine.g);
    auto& domain = problem.domain;
    function (domain.type);
    function (domain.size);
    function (domain.exponents_end);
    function (domain.exponent);
    auto& constraint = problem.affine_constraint;
    function (constraint.domain);
    function (constraint.end);
    function (constraint.expression);
    function (constraint.b);
    auto& cone = problem.cone;
    function (cone.type);
    function (cone.parameter);
    function (cone.end);
    function (cone.member);
    function (cone.cone_of);
    function (bar.order);
    function (bar.end);
}

static void write (Writer& to, const Problem& problem)
{
    to.put (problem.sense);
    to.put (problem.constant);
    to.put_array (problem.cost);
    write (to, problem.variable);
    write (to, problem.constraint);
    to.put_array (problem.integer);
    to.put (problem.integers);
    write (to, problem.matrix);
    to.put (problem.is_linear ());
    if (problem.is_linear ())
        return;
    write (to, problem.affine.f);
    each_further_vector (problem, [&] (const auto& values) { to.put_array (values); });
}

static void read (Reader& from, const std::shared_ptr<const void>& owner, Problem& problem)
{
    problem.sense = from.get<std::int32_t> ();
    problem.constant = from.get<double> ();
    from.get_into (problem.cost);
    read (from, problem.variable);
    read (from, problem.constraint);
    from.get_into (problem.integer);
    problem.integers = from.get<std::int32_t> ();
    problem.matrix = read_matrix (from, owner);
    const std::size_t n = problem.variable.key.size ();
    if (problem.cost.size () != n || problem.integer.size () != n ||
        static_cast<std::size_t> (problem.matrix.columns ()) != n)
        throw BrokenMessage ("arrays of a problem have different lengths");
    if (from.get_bool ())
        return;
    problem.affine.f = read_matrix (from, owner);
    each_further_vector (problem, [&] (auto& values) { from.get_into (values); });
}

// What starts are made of.
static void write (Writer& to, const Solution& solution)
{
    to.put (solution.problem_status);
    to.put (solution.solution_status);
    for (const auto* keys : {&solution.skc, &solution.skx})
        to.put_array (*keys);
    for (const auto* values : {&solution.xc, &solution.xx, &solution.y, &solution.slx, &solution.sux})
        to.put_array (*values);
    to.put (solution.has_primal);
    to.put (solution.has_dual);
}

static Solution read_solution (Reader& from)
{
    Solution solution;
    solution.problem_status = from.get<std::int32_t> ();
    solution.solution_status = from.get<std::int32_t> ();
    for (auto* keys : {&solution.skc, &solution.skx})
        from.get_into (*keys);
    for (auto* values : {&solution.xc, &solution.xx, &solution.y, &solution.slx, &solution.sux})
        from.get_into (*values);
    solution.has_primal = from.get_bool ();
    solution.has_dual = from.get_bool ();
    return solution;
}

template <class Value, class Write>
static void write_optional (Writer& to, const std::optional<Value>& value, const Write& write_value)
{
    to.put (value.has_value ());
    if (value)
        write_value (*value);
}

static void write (Writer& to, const Point& point)
{
    to.put (point.outcome);
    for (const auto* values : {&point.x, &point.y, &point.reduced_cost, &point.dual_ray, &point.primal_ray,
                               &point.barx, &point.doty, &point.snx})
        to.put_array (*values);
    for (const auto* keys : {&point.column_key, &point.row_key})
        to.put_array (*keys);
    write_optional (to, point.bound, [&] (double bound) { to.put (bound); });
    to.put_text (point.message);
}

static Point read_point (Reader& from)
{
    Point point;
    point.outcome = from.get_enumeration (Outcome::failed);
    for (auto* values : {&point.x, &point.y, &point.reduced_cost, &point.dual_ray, &point.primal_ray,
                         &point.barx, &point.doty, &point.snx})
        from.get_into (*values);
    for (auto* keys : {&point.column_key, &point.row_key})
        from.get_into (*keys);
    if (from.get_bool ())
        point.bound = from.get<double> ();
    point.message = from.get_text ();
    return point;
}

static void write (Writer& to, const Attempt& attempt)
{
    to.put (attempt.method);
    to.put (attempt.reformulate);
    to.put (attempt.patient);
}

static Attempt read_attempt (Reader& from)
{
    Attempt attempt;
    attempt.method = from.get_enumeration (last_method);
    attempt.reformulate = from.get_bool ();
    attempt.patient = from.get_bool ();
    return attempt;
}

static void write (Writer& to, const Begun& begun)
{
    write (to, begun.attempt);
    to.put (begun.from_start);
    to.put (begun.without_far_bounds);
    to.put (begun.scaled);
    to.put (begun.centred);
}

static Begun read_begun (Reader& from)
{
    Begun begun{.attempt = read_attempt (from)};
    begun.from_start = from.get_bool ();
    begun.without_far_bounds = from.get_bool ();
    begun.scaled = from.get_bool ();
    begun.centred = from.get<std::int32_t> ();
    return begun;
}

static void write (Writer& to, const Past& past)
{
    write (to, past.begun);
    write (to, past.claim);
}

static Past read_past (Reader& from)
{
    Begun begun = read_begun (from);
    return {begun, read_point (from)};
}

// The number of items to follow, each of which takes some bytes of the message.
static std::size_t read_count (Reader& from, const Message& message)
{
    return from.get_below (message.body.size () + 1);
}

// ---- Messages ------------------------------------------------------------------------------------------------------------------

void write (Writer& to, const Request& request, const Problem& problem)
{
    to.put (request.elapsed);
    to.put (request.most_megabytes);
    to.put (request.integers);
    write (to, request.parameters);
    write (to, request.information);
    write (to, problem);
    for (const std::optional<Solution>& solution : request.earlier)
        write_optional (to, solution, [&] (const Solution& given) { write (to, given); });
    to.put (request.past.size ());
    for (const Past& past : request.past)
        write (to, past);
}

// A small message lies in its socket's buffer, which is used again.
static Message keep (const Message& message)
{
    if (message.owner)
        return message;
    const auto bytes = std::make_shared<std::vector<std::byte>> (message.body.begin (), message.body.end ());
    return {message.kind, message.run, *bytes, bytes};
}

Request read_request (const Message& message, Problem& problem)
{
    const Message kept = keep (message);
    Reader from (kept.body);
    Request request;
    request.elapsed = from.get<double> ();
    request.most_megabytes = from.get<double> ();
    request.integers = from.get_bool ();
    read (from, request.parameters);
    read (from, request.information);
    read (from, kept.owner, problem);
    for (std::optional<Solution>& solution : request.earlier)
        if (from.get_bool ())
            solution = read_solution (from);
    for (std::size_t count = read_count (from, kept); count > 0; --count)
        request.past.push_back (read_past (from));
    from.end ();
    return request;
}

void write (Writer& to, const News& news)
{
    write (to, news.information);
    to.put (news.items.size ());
    for (const Item& item : news.items) {
        to.put (item.index ());
        if (const auto* line = std::get_if<Line> (&item)) {
            to.put (line->kind);
            to.put_text (line->text);
        } else if (const auto* question = std::get_if<Question> (&item))
            to.put (question->caller);
        else if (const auto* run = std::get_if<BegunRun> (&item)) {
            write (to, run->begun);
            to.put_text (run->engine);
        } else if (const auto* past = std::get_if<Past> (&item))
            write (to, *past);
        else
            to.put_array (std::get<NewIncumbent> (item).x);
    }
}

static Item read_item (Reader& from)
{
    switch (from.get_below (std::variant_size_v<Item>)) {
    case 0: {
        Line line{.kind = from.get_enumeration (Kind::error), .text = {}};
        line.text = from.get_text ();
        return line;
    }
    case 1: {
        const Question question{from.get<std::uint32_t> ()};
        if (find_constant (Group::caller, static_cast<std::int32_t> (question.caller)) == nullptr)
            throw BrokenMessage ("a question is of an unknown phase");
        return question;
    }
    case 2: {
        BegunRun run{.begun = read_begun (from), .engine = {}};
        run.engine = from.get_text ();
        return run;
    }
    case 3:
        return read_past (from);
    default: {
        NewIncumbent incumbent;
        from.get_into (incumbent.x);
        return incumbent;
    }
    }
}

static News read_news (Reader& from)
{
    constexpr std::size_t most_news = 10'000;
    News news;
    read (from, news.information);
    for (std::size_t count = from.get_below (most_news); count > 0; --count)
        news.items.push_back (read_item (from));
    return news;
}

News read_news (const Message& message)
{
    Reader from (message.body);
    News news = read_news (from);
    from.end ();
    return news;
}

static void write (Writer& to, const Failure& failure)
{
    to.put (failure.code);
    to.put_text (failure.message);
    const Refused& refused = failure.refused;
    to.put (refused.item);
    to.put (refused.variable);
    to.put (refused.constraint);
    to.put (refused.value);
    to.put (refused.limit);
}

static Failure read_failure (Reader& from)
{
    Failure failure;
    failure.code = from.get<KLVrescode_t> ();
    constexpr KLVrescode_t codes[] = {KLV_RES_OUT_OF_MEMORY, KLV_RES_TOO_LARGE, KLV_RES_NOT_CONVEX,
                                      KLV_RES_ENGINE_MISSING, KLV_RES_THREAD_FAILED};
    if (std::ranges::find (codes, failure.code) == std::end (codes))
        throw BrokenMessage ("a failure has an unknown code");
    failure.message = from.get_text ();
    Refused& refused = failure.refused;
    refused.item = from.get_enumeration (Refused::Item::constraint_curvature);
    refused.variable = from.get<std::int32_t> ();
    refused.constraint = from.get<std::int32_t> ();
    refused.value = from.get<double> ();
    refused.limit = from.get<double> ();
    return failure;
}

void write (Writer& to, const Result& result)
{
    write (to, result.news);
    write_optional (to, result.solved.failure, [&] (const Failure& failure) { write (to, failure); });
    to.put (result.solved.separable);
    const Found& found = result.solved.found;
    for (const auto* tried : {&found.interior, &found.basic, &found.integer})
        write_optional (to, *tried, [&] (const Tried& one) {
            write (to, one.attempt);
            write (to, one.answer.claim);
        });
}

Result read_result (const Message& message)
{
    Reader from (message.body);
    Result result;
    result.news = read_news (from);
    if (from.get_bool ())
        result.solved.failure = read_failure (from);
    result.solved.separable = from.get_bool ();
    Found& found = result.solved.found;
    for (auto* tried : {&found.interior, &found.basic, &found.integer})
        if (from.get_bool ()) {
            tried->emplace (read_attempt (from));
            (*tried)->answer.claim = read_point (from);
        }
    from.end ();
    return result;
}

}
