//! Clarabel behind a C interface, see clarabel_shim.h: what is promised there is not said again here.
//!
//! Every entry that runs code of the engine goes through `guard`, which turns a panic into a code. Nothing is printed:
//! a panic's own message is kept for the caller.

mod problem;
mod settings;

use clarabel::solver::{DefaultInfo, DefaultSolver, IPSolver};
use problem::Problem;
use settings::Settings;
use std::any::Any;
use std::ffi::CStr;
use std::os::raw::{c_char, c_void};
use std::panic::{catch_unwind, set_hook, AssertUnwindSafe};
use std::sync::Once;

pub mod code {
    pub const OK: i32 = 0;
    pub const NULL: i32 = 1;
    pub const DATA: i32 = 2;
    pub const OPTION: i32 = 3;
    pub const VALUE: i32 = 4;
    pub const STATE: i32 = 5;
    pub const PANIC: i32 = 6;
}

#[repr(C)]
pub struct Progress {
    iterations: i64,
    primal_obj: f64,
    dual_obj: f64,
    primal_residual: f64,
    dual_residual: f64,
    gap_abs: f64,
    gap_rel: f64,
    time_s: f64,
}

#[repr(C)]
pub struct Outcome {
    status: i32,
    num_columns: i64,
    num_rows: i64,
    x: *const f64,
    z: *const f64,
    s: *const f64,
    primal_obj: f64,
    dual_obj: f64,
    primal_residual: f64,
    dual_residual: f64,
    time_s: f64,
    iterations: i64,
}

type Callback = extern "C" fn(user: *mut c_void, progress: *const Progress) -> i32;

/// What the C side holds as zlr_clarabel_solver.
pub struct Solver {
    engine: DefaultSolver<f64>,
    has_result: bool,
    is_broken: bool,
}

// ---- codes, texts, panics

/// Writes a text into a C buffer, cut between characters and terminated.
fn write_text(text: &str, buffer: *mut c_char, size: i64) {
    let Ok(room) = usize::try_from(size) else {
        return;
    };
    if buffer.is_null() || room == 0 {
        return;
    }
    let mut num = text.len().min(room - 1);
    while !text.is_char_boundary(num) {
        num -= 1;
    }
    // SAFETY: the caller's buffer has `room` bytes, and num is less than that.
    unsafe {
        std::ptr::copy_nonoverlapping(text.as_ptr().cast::<c_char>(), buffer, num);
        *buffer.add(num) = 0;
    }
}

/// # Safety
/// `text` is null or terminated.
pub unsafe fn text_of<'a>(text: *const c_char) -> Option<&'a str> {
    if text.is_null() {
        return None;
    }
    // A name that is no UTF-8 is none that the engine has.
    Some(CStr::from_ptr(text).to_str().unwrap_or(""))
}

fn words_of(panic: &(dyn Any + Send)) -> String {
    if let Some(text) = panic.downcast_ref::<String>() {
        return text.clone();
    }
    let text = panic.downcast_ref::<&str>().copied();
    text.unwrap_or("an assertion failed").to_string()
}

/// Runs what may fail or panic and gives its code, with the reason in the caller's buffer.
pub fn guard(
    message: *mut c_char,
    size: i64,
    body: impl FnOnce() -> Result<(), (i32, String)>,
) -> i32 {
    // The default hook prints to the console. It belongs to this copy of Rust's library, thus to the engine alone.
    static QUIET: Once = Once::new();
    QUIET.call_once(|| set_hook(Box::new(|_| {})));

    write_text("", message, size);
    let (code, text) = match catch_unwind(AssertUnwindSafe(body)) {
        Ok(Ok(())) => return code::OK,
        Ok(Err(failure)) => failure,
        Err(panic) => (code::PANIC, words_of(panic.as_ref())),
    };
    write_text(&text, message, size);
    code
}

// ---- the callback

/// The caller's callback with its argument. The engine calls it on the thread of the solve, but asks for more.
struct Caller {
    callback: Callback,
    user: *mut c_void,
}

unsafe impl Send for Caller {}
unsafe impl Sync for Caller {}

impl Caller {
    fn stops(&self, info: &DefaultInfo<f64>) -> bool {
        let progress = Progress {
            iterations: i64::from(info.iterations),
            primal_obj: info.cost_primal,
            dual_obj: info.cost_dual,
            primal_residual: info.res_primal,
            dual_residual: info.res_dual,
            gap_abs: info.gap_abs,
            gap_rel: info.gap_rel,
            time_s: info.solve_time,
        };
        (self.callback)(self.user, &progress) != 0
    }
}

// ---- entries

#[no_mangle]
pub extern "C" fn zlr_clarabel_version() -> *const c_char {
    concat!(env!("CARGO_PKG_VERSION"), "\0").as_ptr().cast()
}

/// # Safety
/// Pointers are null or what the header says; arrays are as long as the problem's sizes and starts tell.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_new(
    problem: *const Problem,
    settings: *const Settings,
    solver: *mut *mut Solver,
    message: *mut c_char,
    size: i64,
) -> i32 {
    if solver.is_null() {
        return code::NULL;
    }
    *solver = std::ptr::null_mut();
    let (Some(problem), Some(settings)) = (problem.as_ref(), settings.as_ref()) else {
        return code::NULL;
    };
    guard(message, size, || {
        let input = problem::read(problem).map_err(|text| (code::DATA, text))?;
        let engine = DefaultSolver::new(
            &input.p,
            &input.q,
            &input.a,
            &input.b,
            &input.cones,
            settings.0.clone(),
        )
        .map_err(|e| (code::DATA, e.to_string()))?;
        *solver = Box::into_raw(Box::new(Solver {
            engine,
            has_result: false,
            is_broken: false,
        }));
        Ok(())
    })
}

/// # Safety
/// `solver` is null or came from zlr_clarabel_new and is not used again.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_free(solver: *mut Solver) {
    if !solver.is_null() {
        guard(std::ptr::null_mut(), 0, || {
            drop(Box::from_raw(solver));
            Ok(())
        });
    }
}

/// # Safety
/// `solver` is null or a live handle; `user` is what the callback takes.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_solve(
    solver: *mut Solver,
    callback: Option<Callback>,
    user: *mut c_void,
    message: *mut c_char,
    size: i64,
) -> i32 {
    let Some(solver) = solver.as_mut() else {
        return code::NULL;
    };
    if solver.is_broken {
        return code::STATE;
    }
    solver.has_result = false;
    let res = guard(message, size, || {
        if let Some(callback) = callback {
            let caller = Caller { callback, user };
            solver
                .engine
                .set_termination_callback(move |info: &DefaultInfo<f64>| caller.stops(info));
        }
        solver.engine.solve();
        solver.engine.unset_termination_callback();
        Ok(())
    });
    solver.has_result = res == code::OK;
    solver.is_broken = res == code::PANIC;
    res
}

/// # Safety
/// `solver` is null or a live handle, `result` null or writable.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_get_result(
    solver: *const Solver,
    result: *mut Outcome,
) -> i32 {
    let (Some(solver), Some(out)) = (solver.as_ref(), result.as_mut()) else {
        return code::NULL;
    };
    if !solver.has_result {
        return code::STATE;
    }
    let found = &solver.engine.solution;
    *out = Outcome {
        status: found.status as i32,
        num_columns: found.x.len() as i64,
        num_rows: found.z.len() as i64,
        x: found.x.as_ptr(),
        z: found.z.as_ptr(),
        s: found.s.as_ptr(),
        primal_obj: found.obj_val,
        dual_obj: found.obj_val_dual,
        primal_residual: found.r_prim,
        dual_residual: found.r_dual,
        time_s: found.solve_time,
        iterations: i64::from(found.iterations),
    };
    code::OK
}

/// # Safety
/// `message` is null or has `size` bytes.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_provoke(message: *mut c_char, size: i64) -> i32 {
    guard(message, size, || panic!("provoked"))
}
