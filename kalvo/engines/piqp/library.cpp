// The one source that includes the library, which consists of headers. Its sparse factorisation is replaced by our own, so that no
// code is made of it.
#include "kalvo/engines/piqp/library.h"

#include <cstdio>

#include <piqp/fwd.hpp>
#undef piqp_eprint
#define piqp_eprint(...) static_cast<void> (0)    // it would write to the process's stderr
#include <piqp/piqp.hpp>

#include <optional>
#include <stdexcept>
#include <utility>

namespace klv::piqp {

namespace library = ::piqp;
using Vector = library::Vec<double>;
template <int Type>
using Solver = std::conditional_t<Type == library::PIQP_DENSE, library::DenseSolver<double>,
                                  library::SparseSolver<double, int>>;
template <int Type>
using Data = std::conditional_t<Type == library::PIQP_DENSE, library::dense::Data<double>,
                                library::sparse::Data<double, int>>;
template <int Type>
using Newton = library::KKTSolverBase<double, int, Type>;

// Solves [P + x_reg, A', G'; A, -delta, 0; G, 0, -z_reg] by our own factorisation, once it was given.
class SparseNewton final : public Newton<library::PIQP_SPARSE> {
public:
    using Form = Data<library::PIQP_SPARSE>;

    void begin (NewtonSystem& system, const StopFlag& stop)
    {
        ldl_ = &system.sparse ();
        stop_ = &stop;
        values_.resize (static_cast<std::size_t> (system.entries ()));
        right_.resize (ldl_->order ().size ());
    }

    std::unique_ptr<Newton<library::PIQP_SPARSE>> clone () const override
    {
        throw std::logic_error ("a solver is not copied");
    }
    void update_data (const Form&, int) override {}
    bool update_scalings_and_factor (const Form& data, const double& delta, const Vector& x_reg,
                                     const Vector& z_reg) override
    {
        // Columns of the upper triangle, each with the diagonal as its last entry.
        double* to = values_.data ();
        const double* const end = to + values_.size ();
        const auto put = [&] (const auto& matrix, library::isize j, bool has_diagonal, double more) {
            const auto begin = matrix.outerIndexPtr ()[j], count = matrix.outerIndexPtr ()[j + 1] - begin;
            if (end - to < count + !has_diagonal)
                throw std::logic_error ("a matrix is not as it was");
            to = std::copy_n (matrix.valuePtr () + begin, count, to);
            if (has_diagonal)
                to[-1] += more;
            else
                *to++ = more;
        };
        for (library::isize j = 0; j < data.n; ++j) {
            const auto last = data.P_utri.outerIndexPtr ()[j + 1];
            put (data.P_utri, j,
                 last > data.P_utri.outerIndexPtr ()[j] && data.P_utri.innerIndexPtr ()[last - 1] == j,
                 x_reg[j]);
        }
        for (library::isize i = 0; i < data.p; ++i)
            put (data.AT, i, false, -delta);
        for (library::isize i = 0; i < data.m; ++i)
            put (data.GT, i, false, -z_reg[i]);
        return to == end && ldl_->factor (values_, 0, stop_) &&
               std::ranges::none_of (ldl_->pivots (), [] (double pivot) { return pivot == 0; });
    }
    void solve (const Form& data, const Vector& right_x, const Vector& right_y, const Vector& right_z,
                Vector& x, Vector& y, Vector& z) override
    {
        right_ << right_x, right_y, right_z;
        ldl_->solve ({right_.data (), static_cast<std::size_t> (right_.size ())});
        x = right_.head (data.n);
        y = right_.segment (data.n, data.p);
        z = right_.tail (data.m);
    }
    void eval_P_x (const Form& data, const double& factor, const Vector& x, Vector& product) override
    {
        product.noalias () = factor * data.P_utri * x;
        product.noalias () += factor * data.P_utri.transpose ().triangularView<Eigen::StrictlyLower> () * x;
    }
    void eval_A_xn_and_AT_xt (const Form& data, const double& factor, const double& factor_of_transpose,
                              const Vector& x, const Vector& y, Vector& product,
                              Vector& product_of_transpose) override
    {
        product.noalias () = factor * data.AT.transpose () * x;
        product_of_transpose.noalias () = factor_of_transpose * data.AT * y;
    }
    void eval_G_xn_and_GT_xt (const Form& data, const double& factor, const double& factor_of_transpose,
                              const Vector& x, const Vector& z, Vector& product,
                              Vector& product_of_transpose) override
    {
        product.noalias () = factor * data.GT.transpose () * x;
        product_of_transpose.noalias () = factor_of_transpose * data.GT * z;
    }

private:
    Ldl* ldl_ = nullptr;
    const StopFlag* stop_ = nullptr;
    std::vector<double> values_;
    Vector right_;
};

// Asks before each factorisation whether to go on.
template <int Type>
class Watched final : public Newton<Type> {
public:
    Watched (std::unique_ptr<Newton<Type>> inner, std::function<bool ()> goes_on)
        : inner_ (std::move (inner)), goes_on_ (std::move (goes_on))
    {}

    std::unique_ptr<Newton<Type>> clone () const override
    {
        return std::make_unique<Watched> (inner_->clone (), goes_on_);
    }
    void update_data (const Data<Type>& data, int options) override { inner_->update_data (data, options); }
    bool update_scalings_and_factor (const Data<Type>& data, const double& delta, const Vector& x_reg,
                                     const Vector& z_reg) override
    {
        ends_ = ends_ || !goes_on_ ();
        return !ends_ && inner_->update_scalings_and_factor (data, delta, x_reg, z_reg);
    }
    void solve (const Data<Type>& data, const Vector& right_x, const Vector& right_y, const Vector& right_z,
                Vector& x, Vector& y, Vector& z) override
    {
        inner_->solve (data, right_x, right_y, right_z, x, y, z);
    }
    void eval_P_x (const Data<Type>& data, const double& factor, const Vector& x, Vector& product) override
    {
        inner_->eval_P_x (data, factor, x, product);
    }
    void eval_A_xn_and_AT_xt (const Data<Type>& data, const double& factor, const double& factor_of_transpose,
                              const Vector& x, const Vector& y, Vector& product,
                              Vector& product_of_transpose) override
    {
        inner_->eval_A_xn_and_AT_xt (data, factor, factor_of_transpose, x, y, product, product_of_transpose);
    }
    void eval_G_xn_and_GT_xt (const Data<Type>& data, const double& factor, const double& factor_of_transpose,
                              const Vector& x, const Vector& z, Vector& product,
                              Vector& product_of_transpose) override
    {
        inner_->eval_G_xn_and_GT_xt (data, factor, factor_of_transpose, x, z, product, product_of_transpose);
    }

private:
    std::unique_ptr<Newton<Type>> inner_;
    std::function<bool ()> goes_on_;
    bool ends_ = false;
};

// The parts of the library's solver that a run needs and that are not public.
template <int Type>
class OpenSolver : public Solver<Type> {
public:
    std::unique_ptr<Newton<Type>>& newton () { return this->m_kkt_system.*Opened::pointer (); }
    bool is_ready () const { return this->m_setup_done; }
    const library::Info<double>& info () const { return this->m_result.info; }

private:
    struct Opened : library::KKTSystem<double, int, Type> {
        static auto pointer () { return &Opened::kkt_solver; }
    };
};

}

template <>
inline bool piqp::detail::init_kkt_solver_impl<double, int> (
    const sparse::Data<double, int>&, const Settings<double>&,
    std::unique_ptr<KKTSolverBase<double, int, PIQP_SPARSE>>& made, std::integral_constant<int, PIQP_SPARSE>)
{
    made = std::make_unique<klv::piqp::SparseNewton> ();
    return true;
}

namespace klv::piqp {

static Eigen::Map<const Vector> view (const std::vector<double>& values)
{
    return {values.data (), static_cast<Eigen::Index> (values.size ())};
}

static Eigen::Map<const Eigen::SparseMatrix<double>> view (const SparseColumns& matrix, std::size_t rows)
{
    return {static_cast<Eigen::Index> (rows),
            matrix.columns (),
            matrix.starts.back (),
            matrix.starts.data (),
            matrix.rows.data (),
            matrix.values.data ()};
}

template <int Type>
static void set_up (OpenSolver<Type>& solver, const QuadraticForm& form)
{
    const auto quadratic = view (form.quadratic, form.cost.size ()),
               equality = view (form.equality, form.right.size ()),
               range = view (form.range, form.range_lower.size ());
    using Bounds = library::optional<library::CVecRef<double>>;
    const auto pass = [&] (const auto& terms, const auto& equations, const auto& ranges) {
        using Reference = std::conditional_t<Type == library::PIQP_DENSE, library::CMatRef<double>,
                                             library::CSparseMatRef<double, int>>;
        solver.setup (terms, view (form.cost), Reference (equations), Bounds (view (form.right)),
                      Reference (ranges), Bounds (view (form.range_lower)), Bounds (view (form.range_upper)),
                      Bounds (view (form.lower)), Bounds (view (form.upper)));
    };
    if constexpr (Type == library::PIQP_DENSE)
        pass (Eigen::MatrixXd (quadratic), Eigen::MatrixXd (equality), Eigen::MatrixXd (range));
    else
        pass (quadratic, equality, range);
}

static Iteration iteration_of (const library::Info<double>& info)
{
    return {info.iter, info.primal_obj, info.dual_obj, info.primal_res, info.dual_res};
}

static Status status_of (library::Status status)
{
    switch (status) {
    case library::PIQP_SOLVED:
        return Status::solved;
    case library::PIQP_MAX_ITER_REACHED:
        return Status::iteration_limit;
    case library::PIQP_PRIMAL_INFEASIBLE:
        return Status::infeasible;
    case library::PIQP_DUAL_INFEASIBLE:
        return Status::unbounded;
    case library::PIQP_NUMERICS:
        return Status::broke_down;
    default:
        return Status::refused;
    }
}

template <class Expression>
static std::vector<double> values_of (const Expression& expression)
{
    std::vector<double> values (static_cast<std::size_t> (expression.size ()));
    Eigen::Map<Vector> (values.data (), expression.size ()) = expression;
    return values;
}

// The library's defaults make rough multipliers and rays.
template <int Type>
static Answer run (const QuadraticForm& form, NewtonSystem& system, const Options& options,
                   const StopFlag& stop, const std::function<bool (const Iteration&)>& goes_on)
{
    OpenSolver<Type> solver;
    library::Settings<double>& settings = solver.settings ();
    settings.eps_abs = settings.eps_duality_gap_abs = options.tolerance;
    settings.eps_rel = 1e-12;
    settings.eps_primal_inf = settings.eps_dual_inf = 1e-8;
    settings.max_iter = options.iterations;
    if (options.least_regularization > 0)
        settings.reg_lower_limit = settings.reg_finetune_lower_limit = options.least_regularization;
    if (!options.scales)
        settings.preconditioner_iter = 0;
    set_up (solver, form);
    Answer answer;
    if (!solver.is_ready ())
        return answer;
    auto& newton = solver.newton ();
    if constexpr (Type == library::PIQP_SPARSE)
        dynamic_cast<SparseNewton&> (*newton).begin (system, stop);
    bool started = false;    // before the start there are no figures yet
    newton = std::make_unique<Watched<Type>> (std::move (newton), [&] {
        return goes_on (std::exchange (started, true) ? iteration_of (solver.info ()) : Iteration ()) &&
               !stop.load (std::memory_order_relaxed);
    });
    answer.status = status_of (solver.solve ());
    const library::Result<double>& result = solver.result ();
    answer.last = iteration_of (result.info);
    answer.x = values_of (result.x);
    answer.equality = values_of (-result.y);
    answer.range = values_of (result.z_l - result.z_u);
    answer.reduced_cost = values_of (result.z_bl - result.z_bu);
    return answer;
}

Answer solve (const QuadraticForm& form, NewtonSystem& system, const Options& options, const StopFlag& stop,
              const std::function<bool (const Iteration&)>& goes_on)
{
    return system.dense () ? run<library::PIQP_DENSE> (form, system, options, stop, goes_on)
                           : run<library::PIQP_SPARSE> (form, system, options, stop, goes_on);
}

}
