// SPDX-License-Identifier: MIT
#include "transfer/gallerypage.h"

namespace galleryPage
{
QByteArray beginning()
{
    return R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy"
 content="default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="generator" content="Quillary">
)";
}

QByteArray style()
{
    // Cards far from view are not laid out; the size they are taken to have follows from their pictures.
    return R"(<style>
:root {
  color-scheme: light dark;
  --zoom: 1; --page: #f4f4f2; --card: #fff; --text: #1d1d1b; --faint: #5f5f5a; --line: #cfcfca; --mark: #0b63c5;
  --square: #c8c8c8; --ground: #f0f0f0;
}
:root[data-theme="light"] { color-scheme: light; }
:root[data-theme="dark"] { color-scheme: dark; }
@media (prefers-color-scheme: dark) {
  :root:not([data-theme="light"]) {
    --page: #1b1c1e; --card: #26282b; --text: #ececea; --faint: #a6a6a1; --line: #42454a; --mark: #6db3ff;
    --square: #4a4a4a; --ground: #333;
  }
}
:root[data-theme="dark"] {
  --page: #1b1c1e; --card: #26282b; --text: #ececea; --faint: #a6a6a1; --line: #42454a; --mark: #6db3ff;
  --square: #4a4a4a; --ground: #333;
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text); font: 14px/1.35 system-ui, sans-serif; }
header { position: sticky; top: 0; z-index: 1; padding: .6rem 1rem; background: var(--page); border-bottom: 1px solid var(--line); }
h1 { margin: 0; font-size: 1.15rem; overflow-wrap: anywhere; }
h2 { margin: .4rem 0 0; font-size: 1em; overflow-wrap: anywhere; }
p { margin: .1rem 0 0; overflow-wrap: anywhere; }
.remark, .folder, .facts, .hint, figcaption, .none { color: var(--faint); font-size: .86em; }
.note { font-size: .86em; font-style: italic; }
form { display: flex; flex-wrap: wrap; gap: .4rem 1rem; align-items: center; margin-top: .4rem; }
label { display: inline-flex; gap: .35rem; align-items: center; }
input, select, button { font: inherit; }
input[type="search"] { width: 14rem; }
main { display: flex; flex-wrap: wrap; gap: .6rem; align-items: flex-start; padding: .8rem 1rem; }
article {
  max-width: 100%; padding: .6rem; background: var(--card); border: 1px solid var(--line); border-radius: 6px;
  width: max(12.5rem, calc((var(--w) * var(--zoom) + 8 * var(--n)) * 1px + 1.4rem)); scroll-margin: 9rem 0 1rem;
  content-visibility: auto; contain-intrinsic-height: calc(var(--h) * var(--zoom) * 1px + 6.5rem);
}
article[hidden] { display: none; }
article:focus, input:focus-visible, select:focus-visible, button:focus-visible { outline: 2px solid var(--mark); outline-offset: 1px; }
.pictures { display: flex; gap: 8px; overflow: auto; }
figure { margin: 0; flex: none; }
figure img {
  display: block; width: calc(var(--w) * var(--zoom) * 1px); height: calc(var(--h) * var(--zoom) * 1px);
  image-rendering: pixelated; image-orientation: none;
  background: var(--ground) repeating-conic-gradient(var(--square) 0 25%, var(--ground) 0 50%) 0 0 / 16px 16px;
}
[data-ground="magenta"] figure img { background: #f0f; }
.swatches {
  display: block; margin-top: .4rem; width: calc(var(--w) * 10px); height: calc(var(--h) * 10px);
  image-rendering: pixelated; border: 1px solid var(--line); box-sizing: content-box;
}
</style>
)";
}

QByteArray controls()
{
    return R"(<form id="controls" hidden>
<label>Filter <input type="search" id="text" autocomplete="off" spellcheck="false"></label>
<label>Format <select id="format"><option value="">all</option></select></label>
<label>Sort <select id="sort">
<option value="table">as in the table</option>
<option value="name">by name</option>
<option value="folder">by path</option>
<option value="address">by address</option>
<option value="format">by format</option>
<option value="pixels">by pixels, most first</option>
<option value="bytes">by bytes, most first</option>
</select></label>
<label>Zoom <select id="zoom">
<option>1</option><option>2</option><option>3</option><option>4</option><option>6</option><option>8</option><option>12</option>
<option>16</option>
</select></label>
<label>Ground <select id="ground"><option value="squares">checkerboard</option><option value="magenta">magenta</option></select></label>
<label>Colours <select id="theme"><option value="system">of the system</option><option>light</option><option>dark</option></select></label>
<output id="count"></output>
<span class="hint">Keys: / filter, + and - zoom, b ground, arrows from card to card</span>
</form>
)";
}

QByteArray script()
{
    // What is chosen goes into the address, so that it can be kept as a bookmark and set from outside: #text=sky&zoom=4
    return R"(<script>
'use strict';
(() => {
const root = document.documentElement;
const form = document.getElementById('controls');
const holder = document.getElementById('cards');
const control = id => document.getElementById(id);
const controls = ['text', 'format', 'sort', 'zoom', 'ground', 'theme'].map(control);
const starts = new Map();
const cards = [...holder.children].map((element, place) => ({
  element, place, name: element.dataset.name, folder: element.dataset.folder, format: element.dataset.format,
  address: Number(element.dataset.address), pixels: Number(element.dataset.pixels), bytes: Number(element.dataset.bytes),
  words: element.textContent.toLowerCase(),
}));
const language = new Intl.Collator(undefined, {numeric: true, sensitivity: 'base'});
const orders = {
  table: () => 0,
  name: (a, b) => language.compare(a.name, b.name),
  folder: (a, b) => language.compare(a.folder + a.name, b.folder + b.name),
  address: (a, b) => a.address - b.address,
  format: (a, b) => language.compare(a.format, b.format),
  pixels: (a, b) => b.pixels - a.pixels,
  bytes: (a, b) => b.bytes - a.bytes,
};
let shown = cards;
let sorting = 'table';
let current = null;

function makeCurrent(card, focus) {
  if (current) current.element.tabIndex = -1;
  current = card;
  if (!card) return;
  card.element.tabIndex = 0;
  if (focus) card.element.focus();
}

function sort() {
  if (control('sort').value === sorting) return;
  sorting = control('sort').value;
  cards.sort((a, b) => orders[sorting](a, b) || a.place - b.place);
  const all = document.createDocumentFragment();
  all.append(...cards.map(card => card.element));
  holder.append(all);
}

function filter() {
  const words = control('text').value.toLowerCase().split(/\s+/).filter(Boolean);
  const format = control('format').value;
  shown = cards.filter(card => {
    const fits = (!format || card.format === format) && words.every(word => card.words.includes(word));
    if (card.element.hidden === fits) card.element.hidden = !fits;
    return fits;
  });
  if (!current || current.element.hidden) makeCurrent(shown[0] || null, false);
  control('count').textContent = shown.length === cards.length ? `${cards.length} shown` : `${shown.length} of ${cards.length} shown`;
}

function apply() {
  root.style.setProperty('--zoom', control('zoom').value);
  root.dataset.ground = control('ground').value;
  root.dataset.theme = control('theme').value;
  sort();
  filter();
}

function remember() {
  const chosen = new URLSearchParams();
  for (const one of controls) {
    if (one.value !== starts.get(one)) chosen.set(one.id, one.value);
  }
  history.replaceState(null, '', '#' + chosen);
}

function recall() {
  const chosen = new URLSearchParams(location.hash.slice(1));
  for (const one of controls) {
    one.value = chosen.get(one.id) ?? starts.get(one);
    if (one.tagName === 'SELECT' && one.selectedIndex < 0) one.value = starts.get(one);
  }
  apply();
}

function step(select, by) {
  select.selectedIndex = Math.min(Math.max(select.selectedIndex + by, 0), select.length - 1);
  apply();
  remember();
}

/// The card above (by -1) or below (by 1) the current one that lies nearest to it sideways.
function neighbour(by) {
  const start = shown.indexOf(current);
  const from = current.element.getBoundingClientRect();
  let row = null;
  let best = null;
  for (let i = start + by; i >= 0 && i < shown.length; i += by) {
    const to = shown[i].element.getBoundingClientRect();
    if (to.top === from.top) continue;
    if (row === null) row = to.top;
    if (to.top !== row) break;
    const apart = Math.abs(to.left - from.left);
    if (best === null || apart < best.apart) best = {apart, card: shown[i]};
  }
  return best && best.card;
}

function cardFor(key) {
  const place = shown.indexOf(current);
  switch (key) {
  case 'ArrowRight': return shown[place + 1];
  case 'ArrowLeft': return shown[place - 1];
  case 'ArrowDown': return neighbour(1);
  case 'ArrowUp': return neighbour(-1);
  case 'Home': return shown[0];
  case 'End': return shown[shown.length - 1];
  }
  return null;
}

document.addEventListener('keydown', event => {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const typing = event.target === control('text');
  if (typing && event.key === 'Escape') control('text').value = '', apply(), remember();
  if (typing || event.target.tagName === 'SELECT') return;
  const card = event.target.closest('article') && current ? cardFor(event.key) : null;
  if (card) makeCurrent(card, true);
  else if (event.key === '/') control('text').focus(), control('text').select();
  else if (event.key === '+' || event.key === '=') step(control('zoom'), 1);
  else if (event.key === '-') step(control('zoom'), -1);
  else if (event.key === 'b') step(control('ground'), control('ground').selectedIndex ? -1 : 1);
  else return;
  event.preventDefault();
});
holder.addEventListener('focusin', event => {
  const element = event.target.closest('article');
  if (element && (!current || element !== current.element)) makeCurrent(cards.find(card => card.element === element), false);
});
form.addEventListener('input', () => { apply(); remember(); });
form.addEventListener('submit', event => event.preventDefault());
window.addEventListener('hashchange', recall);

for (const format of [...new Set(cards.map(card => card.format))].filter(Boolean).sort(language.compare))
  control('format').append(new Option(format, format));
for (const one of controls) starts.set(one, one.value);
form.hidden = false;
recall();
})();
</script>
)";
}
}
