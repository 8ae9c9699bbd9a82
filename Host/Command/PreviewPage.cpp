#include "Command/PreviewPage.h"

namespace Quillmere::Velmira {

// The script asks for one set of pictures at a time: a change made while they are on their way only marks the state
// dirty, and the newest state is asked for once they arrive. So renders never queue up, and a picture is shown only
// when no newer one is already on screen. window.velmiraPreview lets tests and benchmarks wait for it and read what
// each change cost.
const std::string& PreviewPage::html() {
  static const std::string page = R"page(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Velmira preview</title>
<style>
  :root { color-scheme: dark; --panel: #1e1f22; --line: #34363b; --text: #e4e4e6; --dim: #9a9ca3; --accent: #e8a87c; }
  * { box-sizing: border-box; }
  html, body { margin: 0; height: 100%; background: #121314; color: var(--text); font: 13px/1.4 system-ui, sans-serif; }
  body { display: flex; }
  aside { width: 320px; flex: none; overflow-y: auto; background: var(--panel); border-right: 1px solid var(--line);
          padding: 14px 16px; }
  h1 { font-size: 15px; margin: 0 0 2px; }
  h2 { font-size: 11px; text-transform: uppercase; letter-spacing: .06em; color: var(--dim); margin: 18px 0 8px; }
  .dim { color: var(--dim); overflow-wrap: anywhere; }
  .slider { margin: 0 0 10px; }
  .slider label { display: flex; justify-content: space-between; }
  .slider output { font-variant-numeric: tabular-nums; color: var(--accent); }
  input[type=range] { width: 100%; margin: 4px 0 0; accent-color: var(--accent); }
  .row { display: flex; gap: 6px; flex-wrap: wrap; align-items: center; }
  button, a.button { background: #2b2d31; color: var(--text); border: 1px solid var(--line); border-radius: 4px;
                     padding: 4px 10px; font: inherit; cursor: pointer; text-decoration: none; }
  button[aria-pressed=true] { background: var(--accent); color: #1b1b1b; border-color: var(--accent); }
  pre { white-space: pre-wrap; overflow-wrap: anywhere; background: #121314; border: 1px solid var(--line);
        border-radius: 4px; padding: 8px; margin: 0 0 6px; font-size: 12px; user-select: all; }
  #status { font-variant-numeric: tabular-nums; }
  #error { color: #ff8a80; }
  main { flex: 1; position: relative; overflow: hidden; }
  #viewport { position: absolute; inset: 0; overflow: hidden; display: grid; place-items: center; }
  #viewport.full { overflow: auto; place-items: start; cursor: grab; }
  #viewport.full.dragging { cursor: grabbing; }
  #stage { position: relative; flex: none; }
  #stage img { position: absolute; inset: 0; width: 100%; height: 100%; display: block; user-select: none;
               -webkit-user-drag: none; }
  #mask { mix-blend-mode: multiply; opacity: .7; }
  #divider { position: absolute; top: 0; bottom: 0; width: 2px; background: var(--accent); pointer-events: none; }
  .tag { position: absolute; top: 8px; padding: 2px 8px; background: rgba(0,0,0,.6); border-radius: 3px; }
  [hidden] { display: none !important; }
</style>
</head>
<body>
<aside>
  <h1>Velmira preview</h1>
  <div class="dim" id="source-name"></div>

  <h2>Sliders</h2>
  <div id="sliders"></div>
  <button id="reset" title="Every slider back to its default">Reset</button>

  <div id="scrub-box" hidden>
    <h2>Frame</h2>
    <label class="row"><input type="range" id="scrub" min="0" max="0" value="0"></label>
    <div class="dim">frame <output id="frame-number">0</output> of <span id="frame-range"></span></div>
  </div>

  <h2>View</h2>
  <div class="row" role="group" aria-label="Before and after">
    <button id="view-after" aria-pressed="true">After</button>
    <button id="view-before" aria-pressed="false" title="The frame as it comes in (B)">Before</button>
    <button id="view-split" aria-pressed="false" title="Before on the left, after on the right">Split</button>
  </div>
  <div class="row" id="split-box" hidden><input type="range" id="split" min="0" max="100" value="50"></div>
  <div class="row" style="margin-top:8px">
    <button id="mask-toggle" aria-pressed="false" title="Darkens what the effect does not blur (M)">Skin mask</button>
    <button id="zoom-fit" aria-pressed="true">Fit</button>
    <button id="zoom-full" aria-pressed="false" title="Drag the picture to pan">100 %</button>
  </div>

  <h2>Last render</h2>
  <div id="status" class="dim">waiting for the first picture</div>
  <div id="error"></div>

  <h2>Render with these settings</h2>
  <pre id="command"></pre>
  <div class="row">
    <button id="copy">Copy</button>
    <a class="button" id="save" download="frame.png">Save frame</a>
  </div>
</aside>
<main>
  <div id="viewport">
    <div id="stage">
      <img id="before" alt="the frame before the effect">
      <img id="frame" alt="the frame with the effect">
      <img id="mask" alt="the skin mask" hidden>
      <div id="divider" hidden></div>
      <span class="tag" id="tag-before" style="left:8px" hidden>before</span>
      <span class="tag" id="tag-after" style="right:8px" hidden>after</span>
    </div>
  </div>
</main>
<script>
"use strict";
const $ = (id) => document.getElementById(id);
const token = new URLSearchParams(location.search).get("token") || "";
const state = { values: {}, frame: 0, view: "after", mask: false, zoom: "fit", split: 50 };
let sliders = [], info = null;

// Pictures: one set on its way at a time; the newest state is asked for when it arrives.
const shown = { frame: null, before: null, mask: null };  // what each layer shows: {url, blob}
let inFlight = false, dirty = false, pendingChanges = [];
const history = [];  // per change: milliseconds until a picture that includes it was on screen

function text(value, slider) { return Number(value).toFixed(slider.decimals); }
function query(withSliders) {
  const q = new URLSearchParams({ token, frame: String(state.frame) });
  if (withSliders) for (const s of sliders) q.set(s.flag, text(state.values[s.flag], s));
  return q.toString();
}
function wanted() {
  const layers = { frame: "/frame.png?" + query(true) };
  if (state.view !== "after") layers.before = "/source.png?" + query(false);
  if (state.mask) {
    const range = sliders.find((s) => s.name === "Skin Blur Range");
    const q = new URLSearchParams({ token, frame: String(state.frame) });
    if (range) q.set(range.flag, text(state.values[range.flag], range));
    layers.mask = "/mask.png?" + q.toString();
  }
  return layers;
}

async function fetchPicture(url) {
  const response = await fetch(url);
  if (!response.ok) throw new Error((await response.text()).trim() || response.statusText);
  const blob = await response.blob();
  const image = new Image();
  image.src = URL.createObjectURL(blob);
  await image.decode();
  return { url, blob, src: image.src, renderMs: Number(response.headers.get("X-Render-Milliseconds")) };
}

function changed() {
  pendingChanges.push(performance.now());
  dirty = true;
  updateCommand();
  pump();
}

async function pump() {
  if (inFlight || !dirty) return;
  dirty = false;
  inFlight = true;
  const changes = pendingChanges;
  pendingChanges = [];
  const asked = performance.now();
  try {
    const layers = wanted();
    const names = Object.keys(layers).filter((name) => !shown[name] || shown[name].url !== layers[name]);
    const pictures = await Promise.all(names.map((name) => fetchPicture(layers[name])));
    names.forEach((name, i) => {
      if (shown[name]) URL.revokeObjectURL(shown[name].src);
      shown[name] = pictures[i];
      $(name).src = pictures[i].src;
    });
    const now = performance.now();
    for (const t of changes) history.push(now - t);
    const effect = names.includes("frame") ? pictures[names.indexOf("frame")] : null;
    if (effect) {
      window.velmiraPreview.renderMs = effect.renderMs;
      $("save").href = effect.src;
      $("status").textContent = `effect ${effect.renderMs.toFixed(0)} ms · on screen ${(now - asked).toFixed(0)} ms ` +
        `after the request`;
    }
    $("error").textContent = "";
  } catch (e) {
    $("error").textContent = e.message;
  }
  inFlight = false;
  layout();
  pump();
  if (!inFlight) settledWaiters.splice(0).forEach((resolve) => resolve());
}

const settledWaiters = [];
window.velmiraPreview = {
  state, history,
  renderMs: null,  // the effect's render of the picture on screen, as the server measured it
  ready: null,  // resolves once the sliders are built and the first pictures asked for
  // Resolves once the pictures of the newest state are on screen.
  settled() { return inFlight || dirty ? new Promise((resolve) => settledWaiters.push(resolve)) : Promise.resolve(); },
  set(flag, value) { const input = document.querySelector(`input[name="${flag}"]`); input.value = value;
                     input.dispatchEvent(new Event("input")); },
  shownBlob(layer) { return shown[layer] ? shown[layer].blob : null; },
};

function shellQuote(word) { return /^[\w@%+=:,./-]+$/.test(word) ? word : "'" + word.replace(/'/g, "'\\''") + "'"; }
function updateCommand() {
  const words = ["velmira", "render", info.input];
  for (const s of sliders) {
    const value = text(state.values[s.flag], s);
    if (value !== text(s.default, s)) words.push("--" + s.flag, value);
  }
  $("command").textContent = words.map(shellQuote).join(" ");
  const base = info.input.replace(/^.*\//, "").replace(/\.[^.]*$/, "").replace(/%/g, "");
  $("save").download = info.still ? `${base}-velmira.png` : `${base}-velmira-${state.frame}.png`;
}

function addSlider(s) {
  const box = document.createElement("div");
  box.className = "slider";
  const label = document.createElement("label");
  const name = document.createElement("span");
  name.textContent = s.name;
  const out = document.createElement("output");
  label.append(name, out);
  const input = document.createElement("input");
  Object.assign(input, { type: "range", name: s.flag, min: s.min, max: s.max, step: Math.pow(10, -s.decimals),
                         value: s.default, title: `--${s.flag}: ${s.units}; double-click the name for the default` });
  const show = () => { out.textContent = text(input.value, s) + (s.percent ? " %" : ""); };
  input.addEventListener("input", () => { state.values[s.flag] = Number(input.value); show(); changed(); });
  label.addEventListener("dblclick", () => { input.value = s.default; input.dispatchEvent(new Event("input")); });
  state.values[s.flag] = s.default;
  show();
  box.append(label, input);
  $("sliders").append(box);
}

function press(ids, on) { for (const id of ids) $(id).setAttribute("aria-pressed", String(id === on)); }
function setView(view) {
  state.view = view;
  press(["view-after", "view-before", "view-split"], "view-" + view);
  $("split-box").hidden = view !== "split";
  changed();
}
function setZoom(zoom) { state.zoom = zoom; press(["zoom-fit", "zoom-full"], "zoom-" + zoom); layout(); }

// Fit scales the frame into the window; 100 % shows every pixel once and pans by dragging.
function layout() {
  if (!info) return;
  const viewport = $("viewport");
  const full = state.zoom === "full";
  viewport.classList.toggle("full", full);
  const scale = full ? 1 : Math.min(viewport.clientWidth / info.width, viewport.clientHeight / info.height);
  Object.assign($("stage").style, { width: info.width * scale + "px", height: info.height * scale + "px" });
  const split = state.view === "split";
  $("frame").hidden = state.view === "before";
  $("frame").style.clipPath = split ? `inset(0 0 0 ${state.split}%)` : "none";
  $("before").hidden = state.view === "after";
  $("divider").hidden = !split;
  $("divider").style.left = state.split + "%";
  $("tag-before").hidden = state.view === "after";
  $("tag-after").hidden = state.view === "before";
  $("mask").hidden = !state.mask;
}

function panByDragging() {
  const viewport = $("viewport");
  let from = null;
  viewport.addEventListener("pointerdown", (e) => {
    if (state.zoom !== "full") return;
    from = { x: e.clientX, y: e.clientY, left: viewport.scrollLeft, top: viewport.scrollTop };
    viewport.setPointerCapture(e.pointerId);
    viewport.classList.add("dragging");
  });
  viewport.addEventListener("pointermove", (e) => {
    if (!from) return;
    viewport.scrollLeft = from.left - (e.clientX - from.x);
    viewport.scrollTop = from.top - (e.clientY - from.y);
  });
  const end = () => { from = null; viewport.classList.remove("dragging"); };
  viewport.addEventListener("pointerup", end);
  viewport.addEventListener("pointercancel", end);
}

async function start() {
  const get = async (path) => {
    const response = await fetch(`${path}?token=${encodeURIComponent(token)}`);
    if (!response.ok) throw new Error((await response.text()).trim());
    return response.json();
  };
  [sliders, info] = await Promise.all([get("/params.json"), get("/info.json")]);
  document.title = `Velmira preview: ${info.input.replace(/^.*\//, "")}`;
  $("source-name").textContent = `${info.input} · ${info.width}×${info.height}` +
    (info.still ? "" : ` · ${info.frameCount} frames at ${(info.rate.num / info.rate.den).toFixed(3).replace(/\.?0+$/, "")} fps`);
  sliders.forEach(addSlider);
  state.frame = info.firstFrame;
  if (!info.still && info.lastFrame > info.firstFrame) {
    $("scrub-box").hidden = false;
    Object.assign($("scrub"), { min: info.firstFrame, max: info.lastFrame, value: info.firstFrame });
    $("frame-range").textContent = `${info.firstFrame}–${info.lastFrame}`;
    $("scrub").addEventListener("input", () => {
      state.frame = Number($("scrub").value);
      $("frame-number").textContent = state.frame;
      changed();
    });
    $("frame-number").textContent = state.frame;
  }
  $("reset").onclick = () => sliders.forEach((s) => window.velmiraPreview.set(s.flag, s.default));
  $("view-after").onclick = () => setView("after");
  $("view-before").onclick = () => setView(state.view === "before" ? "after" : "before");
  $("view-split").onclick = () => setView("split");
  $("split").addEventListener("input", () => { state.split = Number($("split").value); layout(); });
  $("mask-toggle").onclick = () => { state.mask = !state.mask; press(["mask-toggle"], state.mask ? "mask-toggle" : "");
                                     layout(); changed(); };
  $("zoom-fit").onclick = () => setZoom("fit");
  $("zoom-full").onclick = () => setZoom("full");
  $("copy").onclick = () => navigator.clipboard.writeText($("command").textContent);
  document.addEventListener("keydown", (e) => {
    if (e.target.tagName === "INPUT" && e.target.type !== "range") return;
    if (e.key === "b" || e.key === "B") $("view-before").click();
    if (e.key === "m" || e.key === "M") $("mask-toggle").click();
  });
  window.addEventListener("resize", layout);
  panByDragging();
  changed();
}
window.velmiraPreview.ready = start().catch((e) => { $("error").textContent = e.message; });
</script>
</body>
</html>
)page";
  return page;
}

}  // namespace Quillmere::Velmira
