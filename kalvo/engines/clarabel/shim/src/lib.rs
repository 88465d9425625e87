//! The functions of shim.h, by the Clarabel crate.

use clarabel::algebra::CscMatrix;
use clarabel::io::ConfigurablePrintTarget;
use clarabel::solver::SupportedConeT::*;
use clarabel::solver::*;
use std::cell::RefCell;
use std::ffi::{c_char, c_int, c_void};
use std::io::{LineWriter, Write};
use std::panic::{catch_unwind, set_hook, AssertUnwindSafe};
use std::slice;
use std::sync::Once;

#[repr(C)]
pub struct Array<T> {
    data: *const T,
    size: usize,
}

#[repr(C)]
pub struct Matrix {
    starts: Array<i32>,
    rows: Array<i32>,
    values: Array<f64>,
}

#[repr(C)]
pub struct Cone {
    kind: u8,
    rows: i32,
    order: i32,
    exponent: f64,
}

#[repr(C)]
pub struct Problem {
    quadratic: Matrix,
    cost: Array<f64>,
    matrix: Matrix,
    right: Array<f64>,
    cones: Array<Cone>,
}

#[repr(C)]
pub struct Options {
    gap: f64,
    residual: f64,
    certificate: f64,
    acceptance: f64,
    regularization: f64,
    shortest_step: f64,
    seconds: f64,
    iterations: u32,
    threads: u32,
    factorization: u32,
    equilibrates: bool,
}

#[repr(C)]
pub struct Iteration {
    number: u32,
    primal_objective: f64,
    dual_objective: f64,
    primal_residual: f64,
    dual_residual: f64,
}

#[repr(C)]
pub struct Listener {
    receiver: *mut c_void,
    iteration: extern "C" fn(*mut c_void, *const Iteration) -> bool,
    text: Option<extern "C" fn(*mut c_void, *const c_char, usize)>,
}

#[repr(C)]
pub struct Answer {
    x: *mut f64,
    z: *mut f64,
    status: c_int,
    iterations: u32,
    message: [c_char; 400],
}

const FAILED: c_int = -1;

impl<T> Array<T> {
    fn get(&self) -> &[T] {
        match self.size {
            0 => &[],
            size => unsafe { slice::from_raw_parts(self.data, size) },
        }
    }
}

fn require(holds: bool, otherwise: &str) -> Result<(), String> {
    if holds { Ok(()) } else { Err(otherwise.to_string()) }
}

fn finite(values: &Array<f64>, name: &str) -> Result<(), String> {
    require(values.get().iter().all(|v| v.is_finite()), &format!("a number of {name} is not finite"))
}

/// The crate itself reads its arrays unchecked.
fn sparse(given: &Matrix, rows: usize, columns: usize, name: &str) -> Result<CscMatrix<f64>, String> {
    let starts = given.starts.get();
    let entries = given.rows.size;
    finite(&given.values, name)?;
    require(
        starts.len() == columns + 1
            && given.values.size == entries
            && starts[0] == 0
            && starts.windows(2).all(|pair| pair[0] <= pair[1])
            && starts[columns] as usize == entries
            && given.rows.get().iter().all(|&row| row >= 0 && (row as usize) < rows),
        &format!("the matrix of {name} has a wrong size or a wrong index"),
    )?;
    let matrix = CscMatrix {
        m: rows,
        n: columns,
        colptr: starts.iter().map(|&start| start as usize).collect(),
        rowval: given.rows.get().iter().map(|&row| row as usize).collect(),
        nzval: given.values.get().to_vec(),
    };
    matrix.check_format().map_err(|error| format!("the matrix of {name}: {error}"))?;
    Ok(matrix)
}

fn cone(given: &Cone) -> Result<SupportedConeT<f64>, String> {
    let rows = usize::try_from(given.rows).map_err(|_| "a cone has fewer than no rows")?;
    let order = usize::try_from(given.order).map_err(|_| "a cone is of a negative order")?;
    let (cone, needed) = match given.kind {
        0 => (ZeroConeT(rows), rows),
        1 => (NonnegativeConeT(rows), rows),
        2 => (SecondOrderConeT(rows), rows),
        3 => (ExponentialConeT(), 3),
        4 => {
            require(given.exponent > 0.0 && given.exponent < 1.0, "an exponent is not between 0 and 1")?;
            (PowerConeT(given.exponent), 3)
        }
        5 => (PSDTriangleConeT(order), order * (order + 1) / 2),
        _ => return Err("a cone is of no known kind".to_string()),
    };
    require(rows == needed, "a cone has a wrong number of rows")?;
    Ok(cone)
}

fn settings(options: &Options, verbose: bool) -> DefaultSettings<f64> {
    DefaultSettings {
        verbose,
        max_threads: options.threads,
        max_iter: options.iterations,
        time_limit: options.seconds,
        tol_gap_abs: options.gap,
        tol_gap_rel: options.gap,
        tol_feas: options.residual,
        tol_infeas_rel: options.certificate,
        reduced_tol_gap_abs: options.acceptance * options.gap,
        reduced_tol_gap_rel: options.acceptance * options.gap,
        reduced_tol_feas: options.acceptance * options.residual,
        reduced_tol_infeas_rel: options.acceptance * options.certificate,
        equilibrate_enable: options.equilibrates,
        static_regularization_constant: options.regularization,
        direct_solve_method: match options.factorization {
            1 => "qdldl",
            2 => "faer",
            _ => "auto",
        }
        .to_string(),
        min_switch_step_length: options.shortest_step,
        presolve_enable: false,
        chordal_decomposition_enable: false,
        ..DefaultSettings::default()
    }
}

struct Log {
    receiver: *mut c_void,
    text: extern "C" fn(*mut c_void, *const c_char, usize),
}

// The crate writes and calls back on the thread that solves only.
unsafe impl Send for Log {}
unsafe impl Sync for Log {}

impl Write for Log {
    fn write(&mut self, piece: &[u8]) -> std::io::Result<usize> {
        (self.text)(self.receiver, piece.as_ptr().cast(), piece.len());
        Ok(piece.len())
    }
    fn flush(&mut self) -> std::io::Result<()> {
        Ok(())
    }
}

fn solve(problem: &Problem, options: &Options, listener: &Listener, answer: &mut Answer) -> Result<(), String> {
    let (columns, rows) = (problem.cost.size, problem.right.size);
    let quadratic = sparse(&problem.quadratic, columns, columns, "the quadratic part")?;
    let matrix = sparse(&problem.matrix, rows, columns, "the constraints")?;
    finite(&problem.cost, "the objective")?;
    finite(&problem.right, "the right-hand side")?;
    let cones = problem.cones.get().iter().map(cone).collect::<Result<Vec<_>, _>>()?;
    let settings = settings(options, listener.text.is_some());
    let (cost, right) = (problem.cost.get(), problem.right.get());
    let mut solver =
        DefaultSolver::new(&quadratic, cost, &matrix, right, &cones, settings).map_err(|error| error.to_string())?;
    drop((quadratic, matrix));

    match listener.text {
        Some(text) => solver.print_to_stream(Box::new(LineWriter::new(Log { receiver: listener.receiver, text }))),
        None => solver.print_to_sink(),
    }
    let (iteration, receiver) = (listener.iteration, listener.receiver as usize);
    solver.set_termination_callback(move |info: &DefaultInfo<f64>| {
        let now = Iteration {
            number: info.iterations,
            primal_objective: info.cost_primal,
            dual_objective: info.cost_dual,
            primal_residual: info.res_primal,
            dual_residual: info.res_dual,
        };
        !iteration(receiver as *mut c_void, &now)
    });
    solver.solve();

    let solution = &solver.solution;
    unsafe {
        std::ptr::copy_nonoverlapping(solution.x.as_ptr(), answer.x, columns);
        std::ptr::copy_nonoverlapping(solution.z.as_ptr(), answer.z, rows);
    }
    answer.status = solution.status as c_int;
    answer.iterations = solution.iterations;
    Ok(())
}

thread_local! {
    static PANIC: RefCell<String> = const { RefCell::new(String::new()) };
}
static HOOK: Once = Once::new();

fn keep_panics_text() {
    HOOK.call_once(|| {
        set_hook(Box::new(|panic| {
            let _ = PANIC.try_with(|kept| kept.replace(panic.to_string()));
        }))
    });
}

/// # Safety
/// The arrays hold what their sizes say, x and z have room, and the listener's functions do not unwind.
#[no_mangle]
pub unsafe extern "C" fn clarabel_solve(
    problem: *const Problem,
    options: *const Options,
    listener: *const Listener,
    answer: *mut Answer,
) {
    let (problem, options, listener, answer) = (&*problem, &*options, &*listener, &mut *answer);
    answer.status = FAILED;
    answer.iterations = 0;
    answer.message[0] = 0;
    keep_panics_text();
    let solved = catch_unwind(AssertUnwindSafe(|| solve(problem, options, listener, answer)));
    let message = match solved {
        Ok(Ok(())) => return,
        Ok(Err(message)) => message,
        Err(payload) => {
            std::mem::forget(payload); // its destructor could panic
            PANIC.try_with(RefCell::take).unwrap_or_default()
        }
    };
    answer.status = FAILED;
    let length = message.len().min(answer.message.len() - 1);
    for (place, &byte) in answer.message.iter_mut().zip(&message.as_bytes()[..length]) {
        *place = byte as c_char;
    }
    answer.message[length] = 0;
}
