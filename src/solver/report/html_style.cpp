/* html_style.cpp - see html_style.h. One palette for light and one for dark screens; paper always gets the light one.
 * Both keep a contrast of 4.5 to 1 for letters. Blue and vermilion are told apart by colour-blind readers as well, and
 * nothing is told by colour alone. */
#include "solver/report/html_style.h"

#include "solver/params/params.h"

static constexpr char light_colours[] = R"css(
:root {
  --paper: #ffffff; --panel: #f4f6f9; --ink: #17212e; --soft: #55616f; --line: #d3dae3; --link: #0a558f;
  --first: #0a66b0; --second: #b94700; --good: #0b6a45; --part: #7d5400; --bad: #a61b1b;
  --shade1: #b9d3ea; --shade2: #77a9d4; --shade3: #3579b5; --shade4: #0b4a80;
}
)css";

static constexpr char dark_colours[] = R"css(
  :root {
    --paper: #12171e; --panel: #1b222c; --ink: #e4e9ef; --soft: #a3afbc; --line: #35404e; --link: #7fbdf2;
    --first: #62b2ee; --second: #f0a04b; --good: #62cf9e; --part: #e5bb5a; --bad: #f58d85;
    --shade1: #24435f; --shade2: #33699a; --shade3: #5499d2; --shade4: #a5d5fb;
  }
)css";

static constexpr char rules[] = R"css(
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1.5rem clamp(0.8rem, 3vw, 2.5rem) 3rem; max-width: 72rem; background: var(--paper);
  color: var(--ink); font: 1rem/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif;
}
h1 { margin: 0.1rem 0 0.2rem; font-size: 1.9rem; line-height: 1.2; overflow-wrap: anywhere; }
h2 { margin: 0 0 0.8rem; font-size: 1.25rem; line-height: 1.3; }
h3 { margin: 0 0 0.3rem; font-size: 0.95rem; }
p { margin: 0 0 0.7rem; max-width: 46rem; }
a { color: var(--link); }
:focus-visible { outline: 3px solid var(--first); outline-offset: 2px; }
.brand { margin: 0; color: var(--soft); font-size: 0.85rem; letter-spacing: 0.04em; }
.soft, .note { color: var(--soft); }
.note { font-size: 0.85rem; }
nav ul { display: flex; flex-wrap: wrap; gap: 0.2rem 1.1rem; margin: 0.9rem 0 1.2rem; padding: 0; list-style: none; }
nav a { display: inline-block; padding: 0.2rem 0; font-size: 0.92rem; }
section { margin-top: 1.4rem; padding-top: 1.3rem; border-top: 1px solid var(--line); }
.verdict {
  margin-top: 0; padding: 1.1rem 1.2rem 1.2rem; border: 1px solid var(--line); border-left: 0.5rem solid;
  border-radius: 0.4rem; background: var(--panel);
}
.verdict.good { border-left-color: var(--good); }
.verdict.part { border-left-color: var(--part); }
.verdict.bad { border-left-color: var(--bad); }
.verdict h2 { display: flex; align-items: center; gap: 0.55rem; margin-bottom: 0.4rem; font-size: 1.5rem; }
.good h2 { color: var(--good); } .part h2 { color: var(--part); } .bad h2 { color: var(--bad); }
.mark {
  flex: none; width: 1.5rem; height: 1.5rem; fill: none; stroke: currentColor; stroke-width: 2; stroke-linecap: round;
  stroke-linejoin: round;
}
.facts {
  display: grid; grid-template-columns: repeat(auto-fit, minmax(9.5rem, 1fr)); gap: 0.8rem 1.4rem; margin: 1rem 0 0;
}
.facts dt { color: var(--soft); font-size: 0.85rem; }
.facts dd { margin: 0; font-size: 1.2rem; font-variant-numeric: tabular-nums; overflow-wrap: anywhere; }
.list { margin: 0; }
.list div { display: grid; grid-template-columns: 7rem 1fr; gap: 0 1rem; padding: 0.14rem 0; }
.list dt { color: var(--soft); }
.list dd { margin: 0; min-width: 0; overflow-wrap: anywhere; font-variant-numeric: tabular-nums; }
.pair > section { min-width: 0; }
.pair { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 24rem), 1fr)); gap: 1.2rem 2.2rem; }
.tables { display: flex; flex-wrap: wrap; gap: 1.2rem 3rem; }
.tables > div { max-width: 100%; }
bdi, code, pre {
  font-family: ui-monospace, "SF Mono", Menlo, Consolas, "DejaVu Sans Mono", monospace; font-size: 0.92em;
}
h1 bdi { font: inherit; }
bdi { overflow-wrap: anywhere; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; margin: 0.2rem 0 0.6rem; font-size: 0.92rem; font-variant-numeric: tabular-nums; }
th, td {
  padding: 0.28rem 1.1rem 0.28rem 0; border-bottom: 1px solid var(--line); text-align: left; vertical-align: top;
}
thead th { color: var(--soft); font-weight: 600; }
tbody th { font-weight: 400; }
td.num, th.num { text-align: right; white-space: nowrap; }
td bdi, th bdi { display: inline-block; max-width: 20rem; overflow-wrap: break-word; }
details { margin: 0.6rem 0; }
summary { width: fit-content; padding: 0.2rem 0; color: var(--link); cursor: pointer; }
pre {
  margin: 0.5rem 0; padding: 0.8rem 1rem; overflow-x: auto; border: 1px solid var(--line); border-radius: 0.3rem;
  background: var(--panel); font-size: 0.8rem; line-height: 1.4;
}
figure { margin: 0; }
figcaption { margin-bottom: 0.3rem; font-weight: 600; font-size: 0.95rem; }
figcaption span { color: var(--soft); font-weight: 400; }
.chart svg { display: block; width: 100%; height: auto; max-width: 36rem; overflow: visible; }
.chart svg svg { overflow: hidden; }
.matrix svg { display: block; max-width: 100%; height: auto; overflow: visible; }
svg text {
  fill: var(--soft); font: 12px system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif;
  font-variant-numeric: tabular-nums;
}
svg .mid { text-anchor: middle; } svg .end { text-anchor: end; }
.grid { stroke: var(--line); stroke-width: 1; }
.axis { fill: none; stroke: var(--soft); stroke-width: 1; }
.line { fill: none; stroke-width: 2; stroke-linejoin: round; }
.line.first { stroke: var(--first); } circle.first { fill: var(--first); }
.line.second { stroke: var(--second); stroke-dasharray: 6 3; } circle.second { fill: var(--second); }
svg text.name { font-weight: 600; }
svg text.first { fill: var(--first); } svg text.second { fill: var(--second); }
.bar { fill: var(--first); }
.frame { fill: none; stroke: var(--soft); stroke-width: 1; }
.cell { fill: var(--shade4); }
.s1, .s2, .s3, .s4 { fill: none; stroke-width: 1; }
.s1 { stroke: var(--shade1); } .s2 { stroke: var(--shade2); }
.s3 { stroke: var(--shade3); } .s4 { stroke: var(--shade4); }
.legend {
  display: flex; flex-wrap: wrap; gap: 0.2rem 1.1rem; margin: 0.5rem 0 0; padding: 0; list-style: none;
  font-size: 0.85rem; color: var(--soft);
}
.legend svg {
  display: inline-block; width: 0.95rem; height: 0.95rem; margin-right: 0.35rem; vertical-align: -0.12rem;
  border: 1px solid var(--soft);
}
footer {
  margin-top: 2rem; padding-top: 0.8rem; border-top: 1px solid var(--line); color: var(--soft); font-size: 0.85rem;
}
@media (max-width: 34rem) {
  h1 { font-size: 1.5rem; }
  .list div { grid-template-columns: 5.5rem 1fr; }
  th, td { padding-right: 0.7rem; }
}
@media print {
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav { display: none; }
  a { color: inherit; text-decoration: none; }
  figure, tr, .verdict, .list div { break-inside: avoid; }
  h2, h3, h2 + p { break-after: avoid; }
  .pair { grid-template-columns: 1fr 1fr; }
  .scroll { overflow: visible; }
  pre { white-space: pre-wrap; overflow-wrap: anywhere; }
  .verdict { background: none; }
  details:not([open]) { display: none; }
}
)css";

static std::string dark_for(const char *media) { return std::string("@media ") + media + " {" + dark_colours + "}\n"; }

std::string html_style(int32_t theme)
{
    switch (theme) {
    case REPORT_THEME_LIGHT: return std::string("\n:root { color-scheme: light; }") + light_colours + rules;
    case REPORT_THEME_DARK:
        return std::string("\n:root { color-scheme: dark; }") + light_colours + dark_for("screen") + rules;
    default:
        return std::string("\n:root { color-scheme: light dark; }") + light_colours +
               dark_for("screen and (prefers-color-scheme: dark)") + rules;
    }
}
