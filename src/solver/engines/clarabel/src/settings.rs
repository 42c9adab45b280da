//! The engine's settings by name: the one list of those that can be set through the C interface.

use crate::{code, guard, text_of};
use clarabel::solver::DefaultSettings;
use std::os::raw::c_char;

// Left out is what acts on nothing here: settings of cones that the interface does not have, max_threads, and
// dynamic_regularization_enable, which the one solver of linear systems takes as always on.

/// A setting in the type that the engine has for it.
enum Field<'a> {
    Real(&'a mut f64),
    Count(&'a mut u32),
    Switch(&'a mut bool),
    Text(&'a mut String),
}

macro_rules! field_of {
    ($settings:ident, $name:ident, $($kind:ident: $($field:ident)*;)*) => {
        match $name {
            $($(stringify!($field) => Some(Field::$kind(&mut $settings.$field)),)*)*
            _ => None,
        }
    };
}

fn field<'a>(settings: &'a mut DefaultSettings<f64>, name: &str) -> Option<Field<'a>> {
    field_of! { settings, name,
        Real: time_limit max_step_fraction
            tol_gap_abs tol_gap_rel tol_feas tol_infeas_abs tol_infeas_rel tol_ktratio
            reduced_tol_gap_abs reduced_tol_gap_rel reduced_tol_feas
            reduced_tol_infeas_abs reduced_tol_infeas_rel reduced_tol_ktratio
            equilibrate_min_scaling equilibrate_max_scaling
            min_terminate_step_length
            static_regularization_constant static_regularization_proportional
            dynamic_regularization_eps dynamic_regularization_delta
            iterative_refinement_reltol iterative_refinement_abstol iterative_refinement_stop_ratio;
        Count: max_iter equilibrate_max_iter iterative_refinement_max_iter;
        Switch: equilibrate_enable presolve_enable static_regularization_enable
            iterative_refinement_enable;
        Text: direct_solve_method;
    }
}

/// What the C side holds as zlr_clarabel_settings.
pub struct Settings(pub DefaultSettings<f64>);

fn defaults() -> DefaultSettings<f64> {
    DefaultSettings {
        verbose: false,
        ..DefaultSettings::default()
    }
}

fn put_number(settings: &mut DefaultSettings<f64>, name: &str, value: f64) -> i32 {
    let whole = value.fract() == 0.0;
    match field(settings, name) {
        None => return code::OPTION,
        Some(Field::Real(to)) if value >= 0.0 => *to = value,
        Some(Field::Count(to)) if whole && (0.0..=f64::from(u32::MAX)).contains(&value) => {
            *to = value as u32
        }
        Some(Field::Switch(to)) if value == 0.0 || value == 1.0 => *to = value == 1.0,
        Some(_) => return code::VALUE,
    }
    code::OK
}

fn put_text(settings: &mut DefaultSettings<f64>, name: &str, value: &str) -> i32 {
    match field(settings, name) {
        None => return code::OPTION,
        // Without further crates the engine has one solver of linear systems, of two names.
        Some(Field::Text(to)) if value == "auto" || value == "qdldl" => *to = value.to_string(),
        Some(_) => return code::VALUE,
    }
    code::OK
}

#[no_mangle]
pub extern "C" fn zlr_clarabel_settings_new() -> *mut Settings {
    let mut settings = std::ptr::null_mut();
    guard(std::ptr::null_mut(), 0, || {
        settings = Box::into_raw(Box::new(Settings(defaults())));
        Ok(())
    });
    settings
}

/// # Safety
/// `settings` is null or came from zlr_clarabel_settings_new and is not used again.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_settings_free(settings: *mut Settings) {
    if !settings.is_null() {
        drop(Box::from_raw(settings));
    }
}

/// # Safety
/// `settings` is null or a live handle, `name` null or a terminated text.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_put_number(
    settings: *mut Settings,
    name: *const c_char,
    value: f64,
) -> i32 {
    match (settings.as_mut(), text_of(name)) {
        (Some(to), Some(name)) => put_number(&mut to.0, name, value),
        _ => code::NULL,
    }
}

/// # Safety
/// `settings` is null or a live handle, `name` and `value` null or terminated texts.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_put_text(
    settings: *mut Settings,
    name: *const c_char,
    value: *const c_char,
) -> i32 {
    match (settings.as_mut(), text_of(name), text_of(value)) {
        (Some(to), Some(name), Some(value)) => put_text(&mut to.0, name, value),
        _ => code::NULL,
    }
}

/// # Safety
/// `settings` is null or a live handle, `name` null or a terminated text, `value` null or writable.
#[no_mangle]
pub unsafe extern "C" fn zlr_clarabel_get_number(
    settings: *const Settings,
    name: *const c_char,
    value: *mut f64,
) -> i32 {
    let (Some(from), Some(name), Some(out)) = (settings.as_ref(), text_of(name), value.as_mut())
    else {
        return code::NULL;
    };
    match field(&mut from.0.clone(), name) {
        None => return code::OPTION,
        Some(Field::Real(v)) => *out = *v,
        Some(Field::Count(v)) => *out = f64::from(*v),
        Some(Field::Switch(v)) => *out = if *v { 1.0 } else { 0.0 },
        Some(Field::Text(_)) => return code::VALUE,
    }
    code::OK
}
