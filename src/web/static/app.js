// The browser view: three views over the program's JSON answers. Every text
// from the program goes in through textContent, never as markup.
"use strict";

const state = { strings: {}, texts: {}, tokens: {}, view: "status", timer: null, status: null, log: null };

function caption(offset) { return state.strings[offset] || ""; }
// The browser view's own captions, by key, in the same language.
function text(key) { return state.texts[key] || key; }
function stripAmpersand(text) { return text.replace(/&(.)/g, "$1"); }

function showError(text) {
  const box = document.getElementById("error");
  box.textContent = text;
  box.hidden = !text;
}

async function getJson(path) {
  const response = await fetch(path, { cache: "no-store" });
  if (!response.ok) throw new Error((await response.text()).trim());
  return response.json();
}

async function token(page) {
  if (!state.tokens[page]) state.tokens[page] = (await getJson("/api/token?page=" + page)).token;
  return state.tokens[page];
}

async function post(path, page, fields) {
  const body = new URLSearchParams(Object.assign({ page: page, token: await token(page) }, fields));
  const response = await fetch(path, { method: "POST", body: body });
  if (!response.ok) throw new Error((await response.text()).trim());
  return response.json();
}

function applyStrings(answer) {
  state.strings = answer.strings;
  state.texts = answer.web;
  document.getElementById("language").value = answer.language;
  document.documentElement.lang = answer.language.toLowerCase();
  for (const el of document.querySelectorAll("[data-caption]"))
    el.textContent = stripAmpersand(caption(el.dataset.caption)).replace(/:$/, "");
  for (const el of document.querySelectorAll("[data-text]")) el.textContent = text(el.dataset.text);
  // The tables show their last answers again, in the new language.
  if (state.status) showStatus(state.status);
  if (state.log) showFilterLog(state.log);
  document.dispatchEvent(new Event("brindle-strings"));
}

function cell(row, text, className) {
  const td = row.insertCell();
  td.textContent = text;
  if (className) td.className = className;
  return td;
}

function fillTable(id, items, fill) {
  const body = document.querySelector("#" + id + " tbody");
  body.replaceChildren();
  for (const item of items) fill(body.insertRow(), item);
}

const countNames = ["headersReplaced", "customHeadersInserted", "referencesShortened",
  "signaturesAppended", "controlCharsBlanked", "beginLinesDisarmed", "subjectsMarked",
  "multipartsRelabelled", "sendersListed"];

// A channel state the program names ("posting") in the current language.
function stateText(name) { return state.texts["state." + name] || name; }

function showStatus(s) {
  state.status = s;
  fillTable("tunnels", s.tunnels, (row, t) => {
    cell(row, t.protocol);
    cell(row, "127.0.0.1:" + t.srcPort);
    cell(row, t.server + ":" + t.destPort);
    cell(row, t.tls ? "TLS" : text("tls.plain"));
    if (t.listening) cell(row, caption(77) || "Running", "listening");
    else if (t.startError) cell(row, caption(133) + " " + t.startError, "failed");
    else cell(row, caption(78) || "Stopped");
    cell(row, t.bytesFromClient + " / " + t.bytesFromServer, "num");
    cell(row, String(t.channels), "num");
  });
  fillTable("channels", s.channels, (row, c) => {
    cell(row, String(c.index), "num");
    cell(row, c.protocol);
    const st = cell(row, stateText(c.state));
    if (c.tlsInsidePlain) {
      st.className = "warning";
      st.textContent = stateText(c.state) + " — " + text("tls.insidePlain");
    }
    cell(row, c.bytesFromClient + " / " + c.bytesFromServer, "num");
  });
  fillTable("counts", countNames, (row, key) => {
    cell(row, text("count." + key));
    cell(row, String(s.counts[key]), "num").dataset.count = key;
  });
  document.getElementById("recent").textContent = s.recent;
}

async function addSpammer(sender) {
  try {
    const answer = await post("/api/spammer", "status", { sender: sender });
    document.getElementById("spammer-result").textContent = sender + ": " + text("spammer." + answer.result);
  } catch (e) {
    showError(e.message);
  }
}

function showFilterLog(log) {
  state.log = log;
  fillTable("filter-log", log.lines.slice().reverse(), (row, l) => {
    const changes = l.changes.map(text).join(", ");
    for (const value of [l.time, l.tunnel, l.sender, l.subject, changes]) cell(row, value);
    if (!l.sender) return;
    const add = document.createElement("button");
    add.type = "button";
    add.textContent = text("log.addSender");
    add.addEventListener("click", () => addSpammer(l.sender));
    row.insertCell().append(add);
  });
}

async function pollStatus() {
  try {
    showStatus(await getJson("/api/status"));
    showFilterLog(await getJson("/api/filterlog"));
    showError("");
  } catch (e) {
    showError(e.message);
  }
}

function show(view) {
  state.view = view;
  for (const name of ["status", "options", "dryrun"]) {
    document.getElementById("view-" + name).hidden = name !== view;
    const nav = document.getElementById("nav-" + name);
    if (name === view) nav.setAttribute("aria-current", "page"); else nav.removeAttribute("aria-current");
  }
  clearInterval(state.timer);
  if (view === "status") {
    pollStatus();
    state.timer = setInterval(pollStatus, 1000);
  }
  document.dispatchEvent(new CustomEvent("brindle-view", { detail: view }));
}

async function dryRun(event) {
  event.preventDefault();
  try {
    const kind = document.querySelector("input[name=kind]:checked").value;
    const answer = await post("/api/dryrun", "dryrun",
      { kind: kind, text: document.getElementById("dryrun-text").value });
    const out = document.getElementById("dryrun-result");
    out.replaceChildren();
    for (const line of answer.lines) {
      const span = document.createElement("span");
      span.textContent = line.text + "\n";
      if (line.changed) span.className = "changed";
      out.appendChild(span);
    }
    showError("");
  } catch (e) {
    showError(e.message);
  }
}

async function changeLanguage() {
  try {
    applyStrings(await post("/api/language", "options",
      { language: document.getElementById("language").value }));
  } catch (e) {
    showError(e.message);
  }
}

document.addEventListener("DOMContentLoaded", async () => {
  for (const button of document.querySelectorAll("header nav button"))
    button.addEventListener("click", () => show(button.dataset.view));
  document.getElementById("language").addEventListener("change", changeLanguage);
  document.getElementById("dryrun-form").addEventListener("submit", dryRun);
  try {
    applyStrings(await getJson("/api/strings"));
  } catch (e) {
    showError(e.message);
  }
  show(location.hash === "#options" ? "options" : location.hash === "#dryrun" ? "dryrun" : "status");
});
