//! The problem as the C side passes it, checked and copied into the engine's own records.

use clarabel::algebra::CscMatrix;
use clarabel::solver::SupportedConeT;

#[repr(C)]
pub struct Matrix {
    rows: i64,
    columns: i64,
    start: *const i64,
    row: *const i64,
    value: *const f64,
}

#[repr(C)]
pub struct Cone {
    kind: i32,
    size: i64,
}

#[repr(C)]
pub struct Problem {
    p: Matrix,
    q: *const f64,
    a: Matrix,
    b: *const f64,
    cones: *const Cone,
    num_cones: i64,
}

/// The engine's arguments.
pub struct Input {
    pub p: CscMatrix<f64>,
    pub q: Vec<f64>,
    pub a: CscMatrix<f64>,
    pub b: Vec<f64>,
    pub cones: Vec<SupportedConeT<f64>>,
}

/// An array of the C side; null is an empty one, and an error where there should be entries.
unsafe fn array<'a, T>(from: *const T, num: i64, what: &str) -> Result<&'a [T], String> {
    let size = usize::try_from(num).map_err(|_| format!("the size of {what} is negative"))?;
    if size == 0 {
        return Ok(&[]);
    }
    if from.is_null() {
        return Err(format!("{what} is null"));
    }
    Ok(std::slice::from_raw_parts(from, size))
}

unsafe fn numbers(from: *const f64, num: i64, what: &str) -> Result<Vec<f64>, String> {
    let all = array(from, num, what)?;
    match all.iter().position(|v| !v.is_finite()) {
        Some(at) => Err(format!("entry {at} of {what} is {}", all[at])),
        None => Ok(all.to_vec()),
    }
}

unsafe fn indices(from: *const i64, num: i64, what: &str) -> Result<Vec<usize>, String> {
    let turn = |v: &i64| usize::try_from(*v).map_err(|_| format!("an entry of {what} is {v}"));
    array(from, num, what)?.iter().map(turn).collect()
}

unsafe fn matrix(from: &Matrix, what: &str) -> Result<CscMatrix<f64>, String> {
    let rows = usize::try_from(from.rows).map_err(|_| format!("{what} has {} rows", from.rows))?;
    if from.columns >= i64::from(u32::MAX) {
        return Err(format!("{what} has too many columns"));
    }
    let columns = usize::try_from(from.columns)
        .map_err(|_| format!("{what} has {} columns", from.columns))?;
    let start = if columns == 0 {
        vec![0]
    } else {
        indices(from.start, from.columns + 1, "the starts of a matrix")?
    };
    if start[0] != 0 || start.windows(2).any(|pair| pair[0] > pair[1]) {
        return Err(format!("the starts of {what} do not ascend from 0"));
    }
    let num = *start.last().unwrap_or(&0) as i64;
    let row = indices(from.row, num, "the row numbers of a matrix")?;
    let value = numbers(from.value, num, what)?;
    let made = CscMatrix::new(rows, columns, start, row, value);
    made.check_format().map_err(|e| format!("{what}: {e}"))?;
    Ok(made)
}

fn cone(from: &Cone) -> Result<SupportedConeT<f64>, String> {
    let size = usize::try_from(from.size).map_err(|_| "the size of a cone is negative")?;
    match from.kind {
        0 => Ok(SupportedConeT::ZeroConeT(size)),
        1 => Ok(SupportedConeT::NonnegativeConeT(size)),
        2 => Ok(SupportedConeT::SecondOrderConeT(size)),
        kind => Err(format!("there is no cone of kind {kind}")),
    }
}

fn is_upper_triangle(p: &CscMatrix<f64>) -> bool {
    (0..p.n).all(|j| {
        p.rowval[p.colptr[j]..p.colptr[j + 1]]
            .iter()
            .all(|&i| i <= j)
    })
}

/// # Safety
/// The arrays of `from` are null or as long as its sizes and starts tell.
pub unsafe fn read(from: &Problem) -> Result<Input, String> {
    let p = matrix(&from.p, "P")?;
    let a = matrix(&from.a, "A")?;
    if p.n != p.m || p.n != a.n {
        return Err("P is not square of the columns of A".to_string());
    }
    if !is_upper_triangle(&p) {
        return Err("P has entries below its diagonal".to_string());
    }
    let list = array(from.cones, from.num_cones, "the list of cones")?;
    // Sums must not wrap around: the engine adds up without a check.
    let mut rest = from.a.rows;
    for entry in list {
        rest = rest.checked_sub(entry.size).unwrap_or(-1);
    }
    let cones = list.iter().map(cone).collect::<Result<Vec<_>, _>>()?;
    if rest != 0 {
        return Err("the sizes of the cones do not add up to the rows of A".to_string());
    }
    Ok(Input {
        q: numbers(from.q, from.a.columns, "q")?,
        b: numbers(from.b, from.a.rows, "b")?,
        p,
        a,
        cones,
    })
}
