// The option pages: filled from /api/options, sent back whole to Apply.
// Checkboxes travel as 1/0 so that an unticked box is sent too.
"use strict";

const options = { loaded: null, tab: "tunnel-page" };

function el(tag, attrs, ...children) {
  const node = document.createElement(tag);
  for (const [k, v] of Object.entries(attrs || {})) {
    if (k === "caption") node.dataset.caption = v;
    else if (k === "checked") node.checked = v;
    else node.setAttribute(k, v);
  }
  for (const c of children) node.append(c);
  return node;
}
function captioned(tag, offset, attrs) {
  const node = el(tag, Object.assign({ caption: offset }, attrs));
  node.textContent = stripAmpersand(caption(offset)).replace(/:$/, "");
  return node;
}

function tunnelRow(t) {
  const row = el("tr", { "data-origin": t.origin === undefined ? "" : String(t.origin) });
  const type = el("select", { name: "tType" });
  ["NNTP", "POP3", "SMTP"].forEach((name, i) => type.append(el("option", { value: String(i) }, name)));
  type.value = String(t.tType ?? 0);
  type.disabled = t.origin !== undefined;  // a tunnel's type is set once
  const ssl = el("input", { type: "checkbox", name: "SSL", checked: !!t.SSL });
  const syncSsl = () => { ssl.disabled = type.value === "0"; if (ssl.disabled) ssl.checked = false; };
  type.addEventListener("change", syncSsl);
  syncSsl();
  const remove = captioned("button", 30, { type: "button" });
  remove.addEventListener("click", () => row.remove());
  for (const cellContent of [type,
      el("input", { name: "Server", value: t.Server ?? "" }),
      el("input", { name: "SrcPort", value: t.SrcPort ?? "", size: 6 }),
      el("input", { name: "DestPort", value: t.DestPort ?? "", size: 6 }),
      el("input", { type: "checkbox", name: "AutoStart", checked: t.AutoStart ?? true }),
      ssl, remove])
    row.insertCell().append(cellContent);
  return row;
}

function headersPage(box, data) {
  const p = box.dataset.prefix;
  box.replaceChildren(captioned("legend", p === "news" ? 46 : 12));
  box.append(captioned("h3", 47));
  for (const [flag, value, label] of [["change", "value", p === "news" ? "X-Newsreader" : "X-Mailer"],
                                      ["changeMimeOLE", "mimeOLE", "X-MimeOLE"]]) {
    box.append(el("div", { class: "field" },
      el("label", {}, el("input", { type: "checkbox", name: p + "." + flag, checked: data[flag] }), " " + label),
      el("input", { name: p + "." + value, value: data[value] })));
  }
  box.append(captioned("h3", 48));
  const table = el("table");
  const head = table.createTHead().insertRow();
  for (const o of [49, 50, 51]) head.append(captioned("th", o));
  const body = table.createTBody();
  data.rows.forEach(([name, after, text], k) => {
    const row = body.insertRow();
    row.insertCell().append(el("input", { name: p + ".HeaderName" + k, value: name }));
    row.insertCell().append(el("input", { name: p + ".InsertAfter" + k, value: after }));
    row.insertCell().append(el("input", { name: p + ".HeaderBody" + k, value: text, size: 40 }));
  });
  box.append(el("div", { class: "table-scroll" }, table), captioned("p", 137));
}

// One file of a sender's list, kept in a hidden field so that it travels
// with the form.
function fileRow(path) {
  const row = el("li", {}, el("input", { type: "hidden", name: "file", value: path }), path + " ");
  const remove = captioned("button", 30, { type: "button" });
  remove.addEventListener("click", () => row.remove());
  row.append(remove);
  return row;
}

function senderBox(s) {
  const box = el("div", { class: "sender", "data-record": s.record === undefined ? "" : String(s.record) });
  const remove = captioned("button", 30, { type: "button", class: "remove-sender" });
  remove.addEventListener("click", () => box.remove());
  const files = el("ul", { class: "files" }, ...(s.files || []).map(fileRow));
  const newFile = el("input", { class: "new-file", placeholder: "/path/to/signature.txt", size: 40 });
  const addFile = captioned("button", 94, { type: "button" });
  addFile.addEventListener("click", () => {
    if (newFile.value.trim()) files.append(fileRow(newFile.value.trim()));
    newFile.value = "";
  });
  // Captioned pieces, so that a language switch rewords the warning too.
  const warning = s.longLineLimit
    ? el("p", { class: "message" }, captioned("span", 100), " " + s.longLineLimit + " ", captioned("span", 128))
    : el("p", { class: "message" });
  box.append(
    el("div", { class: "field" }, captioned("span", 102), el("input", { name: "name", value: s.name ?? "" })),
    el("div", { class: "field" }, captioned("span", 103), el("input", { name: "email", value: s.email ?? "" })),
    el("div", { class: "field" }, el("span", {}, ""),
       el("span", {}, el("input", { name: "distance", value: String(s.distance ?? 1), size: 3 }), " ",
          captioned("span", 95))),
    captioned("div", 96),
    el("textarea", { name: "text", rows: 4, spellcheck: "false" }),
    warning,
    el("label", {}, el("input", { type: "checkbox", name: "random", checked: !!s.random }), " ",
       captioned("span", 97)),
    el("div", { class: "file-box" }, files, el("div", {}, newFile, " ", addFile)),
    remove);
  box.querySelector("textarea").value = s.text ?? "";
  return box;
}

function fillOptions(data) {
  options.loaded = data;
  showSettingsFileNote();
  const rows = document.getElementById("tunnel-rows");
  rows.replaceChildren(...data.tunnels.map(tunnelRow));
  headersPage(document.getElementById("news-headers"), data.news);
  headersPage(document.getElementById("mail-headers"), data.mail);
  document.getElementById("sender-list").replaceChildren(...data.senders.map(senderBox));
  // The pages whose fields are named "page.Key" after data[page][Key].
  for (const input of document.querySelectorAll(simpleFields)) {
    const [page, key] = input.name.split(".");
    const value = data[page][key];
    const text = typeof value === "boolean" ? (value ? "1" : "0") : String(value ?? "");
    if (input.type === "checkbox") input.checked = !!value;
    else if (input.type === "radio") input.checked = value !== null && input.value === text;
    else input.value = text;
  }
  document.getElementById("quote-legend").replaceChildren(
    ...data.quotes.legend.map((offset) => captioned("li", offset)));
  document.getElementById("about-version").textContent = data.about.version;
  showTab(data.settingsFileExists ? options.tab : "tunnel-page");
}

function showSettingsFileNote() {
  const data = options.loaded;
  if (!data) return;
  const note = document.getElementById("settings-file-note");
  note.hidden = data.settingsFileExists;
  note.textContent = text("settings.none").replace("{apply}", stripAmpersand(caption(39)))
    .replace("{file}", data.settingsFile);
}

function showTab(name) {
  options.tab = name;
  for (const box of document.querySelectorAll("fieldset.tab")) box.hidden = box.id !== name;
  for (const b of document.querySelectorAll("nav.tabs button"))
    if (b.dataset.tab === name) b.setAttribute("aria-current", "page"); else b.removeAttribute("aria-current");
}

const simpleFields = ["filters", "misc", "quotes", "text", "files", "icon", "start"]
  .map((id) => "#" + id + " [name]").join(", ");

function collect() {
  const fields = {};
  const form = document.getElementById("options-form");
  for (const input of form.querySelectorAll("#news-headers [name], #mail-headers [name], " + simpleFields)) {
    if (input.type === "checkbox") fields[input.name] = input.checked ? "1" : "0";
    else if (input.type === "radio") { if (input.checked) fields[input.name] = input.value; }
    else fields[input.name] = input.value;
  }
  const rows = [...document.querySelectorAll("#tunnel-rows tr")];
  fields.tunnels = String(rows.length);
  rows.forEach((row, i) => {
    const p = "tunnel" + i + ".";
    fields[p + "origin"] = row.dataset.origin;
    for (const input of row.querySelectorAll("[name]"))
      fields[p + input.name] = input.type === "checkbox" ? (input.checked ? "1" : "0") : input.value;
  });
  const senders = [...document.querySelectorAll("#sender-list .sender")];
  fields.senders = String(senders.length);
  senders.forEach((box, i) => {
    const p = "sender" + i + ".";
    fields[p + "record"] = box.dataset.record;
    for (const input of box.querySelectorAll("[name]:not([name=file])"))
      fields[p + input.name] = input.type === "checkbox" ? (input.checked ? "1" : "0") : input.value;
    const files = [...box.querySelectorAll("[name=file]")];
    fields[p + "files"] = String(files.length);
    files.forEach((input, k) => { fields[p + "file" + k] = input.value; });
  });
  return fields;
}

async function loadOptions() {
  try { fillOptions(await getJson("/api/options")); } catch (e) { showError(e.message); }
}

async function applyOptions(event) {
  event.preventDefault();
  const message = document.getElementById("options-message");
  message.className = "";
  message.textContent = "";
  try {
    const answer = await post("/api/options", "options", collect());
    if (answer.applied) {
      message.className = "applied";
      message.textContent = "✓";
      await loadOptions();
    } else {
      message.className = "message";
      message.textContent = answer.title + ": " + answer.text;
      if (answer.tab) showTab(answer.tab);
    }
  } catch (e) {
    showError(e.message);
  }
}

document.addEventListener("DOMContentLoaded", () => {
  for (const b of document.querySelectorAll("nav.tabs button"))
    b.addEventListener("click", () => showTab(b.dataset.tab));
  document.getElementById("tunnel-add").addEventListener("click", () =>
    document.getElementById("tunnel-rows").append(tunnelRow({})));
  document.getElementById("sender-add").addEventListener("click", () =>
    document.getElementById("sender-list").append(senderBox({})));
  document.getElementById("options-form").addEventListener("submit", applyOptions);
});
document.addEventListener("brindle-strings", showSettingsFileNote);
document.addEventListener("brindle-view", (e) => { if (e.detail === "options") loadOptions(); });
