#ifndef AUTOOL_LOG_HTMLPARTS_H
#define AUTOOL_LOG_HTMLPARTS_H

// The constant parts of the report. They come into the file as they stand here: its content security policy names their
// hashes, so that nothing else in the file can be script or style.
namespace autool
{
constexpr char kHtmlStyle[] = R"css(
:root { color-scheme: light dark; --line: #8884; --bad: #c62828; --warn: #b26a00; --ok: #2e7d32; --bar: #1565c0; }
body { font: 14px/1.45 system-ui, "Segoe UI", sans-serif; margin: 0 auto; max-width: 75rem; padding: 1rem; }
h1 { font-size: 1.4rem; margin: 0; } h2 { font-size: 1.05rem; margin: 1.4rem 0 .4rem; }
.about { color: GrayText; margin: .2rem 0; }
.counts { display: flex; flex-wrap: wrap; gap: .4rem; padding: 0; list-style: none; }
.counts li { border: 1px solid var(--line); border-radius: 1rem; padding: .1rem .7rem; }
.counts .Error { color: var(--bad); } .counts .Warning { color: var(--warn); }
.findings li { margin: .2rem 0; overflow-wrap: anywhere; } .findings b { color: var(--bad); font-weight: 600; }
svg { width: 100%; height: auto; } svg text { font: 11px system-ui, sans-serif; fill: currentColor; }
svg .phase { fill: var(--bar); } svg .open { fill: var(--warn); } svg .all { fill: #8886; }
svg .warn { fill: var(--warn); } svg .bad { fill: var(--bad); } svg .axis { stroke: #8888; }
form { display: flex; flex-wrap: wrap; gap: .6rem; align-items: center; position: sticky; top: 0; background: Canvas; padding: .4rem 0; }
form input[type=search] { flex: 1 1 15rem; }
table { border-collapse: collapse; width: 100%; table-layout: fixed; }
th { text-align: left; } th, td { border-bottom: 1px solid var(--line); padding: .2rem .5rem .2rem 0; vertical-align: top; }
th.d { width: 9.5rem; } th.t { width: 8rem; }
td { overflow-wrap: anywhere; white-space: pre-wrap; } td:first-child { font-variant-numeric: tabular-nums; }
tr.Error td { color: var(--bad); } tr.Warning td { color: var(--warn); } tr.Environment td { color: GrayText; }
tr[hidden] { display: none; } .cut { color: var(--bad); }
)css";

constexpr char kHtmlScript[] = R"js(
(function () {
  'use strict';
  var rows = Array.prototype.slice.call(document.querySelectorAll('#events tbody tr'));
  var type = document.getElementById('type');
  var text = document.getElementById('text');
  var shown = document.getElementById('shown');
  function apply() {
    var wanted = text.value.toLowerCase(), count = 0;
    rows.forEach(function (row) {
      var fits = (!type.value || row.cells[1].textContent === type.value) &&
                 (!wanted || row.textContent.toLowerCase().indexOf(wanted) >= 0);
      row.hidden = !fits;
      if (fits) { count += 1; }
    });
    shown.textContent = count + ' of ' + rows.length;
  }
  function fromAddress() {
    var asked = new URLSearchParams(location.hash.slice(1));
    type.value = asked.get('type') || '';
    if (type.selectedIndex < 0) { type.selectedIndex = 0; }
    text.value = asked.get('text') || '';
    apply();
  }
  function changed() {
    var asked = new URLSearchParams();
    if (type.value) { asked.set('type', type.value); }
    if (text.value) { asked.set('text', text.value); }
    history.replaceState(null, '', '#' + asked.toString());
    apply();
  }
  type.addEventListener('change', changed);
  text.addEventListener('input', changed);
  document.getElementById('filter').addEventListener('submit', function (event) { event.preventDefault(); });
  window.addEventListener('hashchange', fromAddress);
  fromAddress();
}());
)js";
} // namespace autool

#endif
