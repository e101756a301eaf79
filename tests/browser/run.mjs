// The browser view in a real browser: Debian's Chromium, headless, driven by
// playwright-core. A scripted news server on loopback stands in for the real
// one. Everything listens on ephemeral loopback ports and the whole run is
// bounded by a watchdog.
//
//   BRINDLE_BIN_DIR   where brindle and SslBridge are (default build/debug/bin)
//   BRINDLE_CHROMIUM  the browser (default /usr/bin/chromium)
//   BRINDLE_SCREENSHOTS=DIR  also save the option pages and the status page there
import { chromium } from "playwright-core";
import { spawn } from "node:child_process";
import { appendFileSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import net from "node:net";
import os from "node:os";
import path from "node:path";
import { fileURLToPath } from "node:url";

const here = path.dirname(fileURLToPath(import.meta.url));
const binDir = process.env.BRINDLE_BIN_DIR || path.join(here, "../../build/debug/bin");
const chromiumPath = process.env.BRINDLE_CHROMIUM || "/usr/bin/chromium";
const shots = process.env.BRINDLE_SCREENSHOTS;
const deadline = setTimeout(() => fail("the browser run took longer than 120 s"), 120_000);

const cleanups = [];
function fail(why) {
  console.error("browser test FAILED: " + why);
  for (const c of cleanups.reverse()) { try { c(); } catch { /* going anyway */ } }
  process.exit(1);
}
function check(condition, what) {
  if (!condition) fail(what);
  console.log("ok - " + what);
}

function freePort() {
  return new Promise((resolve, reject) => {
    const s = net.createServer().listen(0, "127.0.0.1", () => {
      const { port } = s.address();
      s.close(() => resolve(port));
    }).on("error", reject);
  });
}

// A news server that takes one article per POST and keeps what it got.
function newsServer() {
  const articles = [];
  const server = net.createServer((socket) => {
    let posting = false;
    let buffer = "";
    socket.write("200 scripted news server ready\r\n");
    socket.on("data", (data) => {
      buffer += data.toString("latin1");
      for (;;) {
        if (posting) {
          const end = buffer.indexOf("\r\n.\r\n");
          if (end < 0) return;
          articles.push(buffer.slice(0, end + 2));
          buffer = buffer.slice(end + 5);
          posting = false;
          socket.write("240 article posted\r\n");
          continue;
        }
        const eol = buffer.indexOf("\r\n");
        if (eol < 0) return;
        const line = buffer.slice(0, eol).toUpperCase();
        buffer = buffer.slice(eol + 2);
        if (line === "POST") { posting = true; socket.write("340 send it\r\n"); }
        else if (line === "QUIT") { socket.end("205 bye\r\n"); return; }
        else socket.write("500 what?\r\n");
      }
    });
    socket.on("error", () => {});
  });
  return new Promise((resolve) =>
    server.listen(0, "127.0.0.1", () => resolve({ server, articles, port: server.address().port })));
}

// Posts one article through the tunnel as a client would, line by line.
function postArticle(port, article) {
  return new Promise((resolve, reject) => {
    const socket = net.connect(port, "127.0.0.1");
    let got = "";
    let step = 0;
    socket.on("data", (data) => {
      got += data.toString("latin1");
      if (step === 0 && got.includes("200 ")) { step = 1; socket.write("POST\r\n"); }
      else if (step === 1 && got.includes("340 ")) { step = 2; socket.write(article + "\r\n.\r\n"); }
      else if (step === 2 && got.includes("240 ")) { step = 3; socket.write("QUIT\r\n"); }
      else if (step === 3 && got.includes("205 ")) { socket.end(); resolve(got); }
    });
    socket.on("error", reject);
  });
}

function startBrindle(settingsDir, webPort, companionPort) {
  const child = spawn(path.join(binDir, "brindle"), ["--settings-dir", settingsDir], {
    env: { ...process.env, BRINDLE_WEB_PORT: String(webPort),
           BRINDLE_COMPANION_PORT: String(companionPort), LANG: "C" },
    stdio: ["ignore", "ignore", "pipe"],
  });
  cleanups.push(() => child.kill("SIGTERM"));
  return new Promise((resolve) => {
    let err = "";
    child.stderr.on("data", (d) => {
      err += d.toString();
      const m = err.match(/browser view: (http:\/\/\S+)/);
      if (m) resolve({ child, address: m[1] });
    });
    child.on("exit", (code) => fail("brindle ended early (" + code + "):\n" + err));
  });
}

process.on("uncaughtException", (e) => fail(e.stack || String(e)));
process.on("unhandledRejection", (e) => fail(e?.stack || String(e)));

const settingsDir = mkdtempSync(path.join(os.tmpdir(), "brindle-browser-"));
const profileDir = mkdtempSync(path.join(os.tmpdir(), "brindle-chromium-"));
cleanups.push(() => rmSync(settingsDir, { recursive: true, force: true }));
cleanups.push(() => rmSync(profileDir, { recursive: true, force: true }));

const news = await newsServer();
cleanups.push(() => news.server.close());
const [webPort, companionPort, tunnelPort] = [await freePort(), await freePort(), await freePort()];
const brindle = await startBrindle(settingsDir, webPort, companionPort);

const context = await chromium.launchPersistentContext(profileDir, {
  executablePath: chromiumPath,
  headless: true,
  viewport: { width: 1100, height: 760 },
  args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync"],
});
cleanups.push(() => context.close());
const page = context.pages()[0] || await context.newPage();
page.setDefaultTimeout(15_000);

// The printed address signs in and then drops the key from the address bar.
await page.goto(brindle.address);
check(new URL(page.url()).search === "", "the key leaves the address after signing in");
await page.waitForSelector("#view-status:not([hidden])");
check(await page.locator("#tunnels tbody tr").count() === 0, "no tunnels before any settings");

// Add a news tunnel to the scripted server and a custom header, then apply.
await page.click("#nav-options");
await page.waitForSelector("#settings-file-note:not([hidden])");
check((await page.textContent("#settings-file-note")).includes(settingsDir),
      "the options say where the settings file will be written");
await page.click("#tunnel-add");
const row = page.locator("#tunnel-rows tr").last();
await row.locator("[name=tType]").selectOption("0");
await row.locator("[name=Server]").fill("127.0.0.1");
await row.locator("[name=SrcPort]").fill(String(tunnelPort));
await row.locator("[name=DestPort]").fill(String(news.port));
await row.locator("[name=AutoStart]").check();
await page.click("#tab-news-headers");
await page.fill("[name='news.HeaderName0']", "X-Brindle-Test");
await page.fill("[name='news.HeaderBody0']", "from the browser");
await page.fill("[name='news.InsertAfter0']", "Subject");
await page.click("#apply");
await page.waitForSelector("#options-message.applied");
if (shots) {
  await page.click("#tab-tunnels");
  await page.screenshot({ path: path.join(shots, "browser-options.png") });
}

// The pages beyond tunnels and headers write through the same Apply: a bad
// port is refused with the language's message, good values reach the file.
const iniText = () => readFileSync(path.join(settingsDir, "OE_Brindle.ini"), "latin1");
const logPath = path.join(settingsDir, "moved.log");
await page.click("#tab-files");
await page.fill("[name='files.Log']", logPath);
await page.click("#tab-text");
await page.fill("[name='text.Wrap']", "200");
await page.click("#tab-misc");
await page.fill("[name='misc.WebPort']", "70000");
await page.click("#tab-files");
const beforeRefusal = iniText();
await page.click("#apply");
await page.locator("#options-message.message", { hasText: "65535" }).waitFor();
check(iniText() === beforeRefusal && await page.isVisible("[name='misc.WebPort']"),
      "a port outside 1..65535 is refused on its own page and nothing is written");
await page.fill("[name='misc.WebPort']", "8120");
await page.click("#apply");
await page.waitForSelector("#options-message.applied");
const ini = iniText();
check(ini.includes("\r\nLogFile=" + logPath + "\r\n") && ini.includes("\r\nWrapText=132\r\n") &&
      ini.includes("\r\nWebPort=8120\r\n"), "files, text processing and port reach the settings file");
check(await page.inputValue("[name='text.Wrap']") === "132", "the page shows the stored wrap length");
if (shots) {
  for (const tab of ["misc", "quotes", "text", "files", "icon", "start", "signatures"]) {
    if (tab === "signatures") {
      await page.click("#tab-signatures");
      if (await page.locator("#sender-list .sender").count() === 0) {
        await page.click("#sender-add");
        const s = page.locator("#sender-list .sender").last();
        await s.locator("[name=name]").fill("Jan Kowalski");
        await s.locator("[name=email]").fill("jan@example.org");
        await s.locator("[name=text]").fill("Jan Kowalski\nhttps://example.org/~jan");
        await s.locator(".new-file").fill("/home/jan/sigs/one.txt");
        await s.locator(".new-file + button").click();
        await s.locator("[name=random]").check();
        await page.click("#apply");
        await page.waitForSelector("#options-message.applied");
      }
    }
    await page.click("#tab-" + tab);
    await page.screenshot({ path: path.join(shots, "browser-options-" + tab + ".png") });
  }
}

await page.click("#nav-status");
await page.waitForSelector("#tunnels tbody tr .listening");
check((await page.textContent("#tunnels tbody tr")).includes(String(tunnelPort)),
      "the new tunnel is listening on the status page");

// A real post through the tunnel: the header arrives, the counter moves.
await postArticle(tunnelPort, "From: a@example.org\r\nNewsgroups: test\r\nSubject: hello\r\n\r\nbody");
check(news.articles.length === 1 && news.articles[0].includes("X-Brindle-Test: from the browser"),
      "the custom header reaches the news server");
await page.locator("[data-count=customHeadersInserted]", { hasText: /^1$/ }).waitFor();
check(true, "the status page counts the inserted header without a reload");
if (shots) await page.screenshot({ path: path.join(shots, "browser-status.png"), fullPage: true });

// A message the filters changed, as the filter log records it.
appendFileSync(logPath, "2026-11-23 15:40:02\tNNTP news\t<a@b>\tjoe@spam.example\tCheap\t" +
               "subject marked, spammer list\r\n", "latin1");
await page.locator("#filter-log", { hasText: "joe@spam.example" }).waitFor();

// The language switch changes the captions at once.
const before = await page.textContent("#nav-options");
await page.selectOption("#language", "DE");
await page.locator("#nav-options").filter({ hasNotText: before }).waitFor();
check(await page.textContent("#nav-options") !== before, "switching the language changes the captions");
await page.locator("#counts").filter({ hasText: "eigene Kopfzeilen eingefügt" }).waitFor();
check(await page.textContent("#nav-dryrun") === "Probelauf" &&
      (await page.textContent("#channels thead")).includes("Zustand"),
      "the status page's own captions follow the language");
await page.locator("#filter-log tbody", { hasText: "Betreff markiert, Spammerliste" }).waitFor();
check(true, "the filter log names the changes in the chosen language");
if (shots) await page.screenshot({ path: path.join(shots, "browser-status-de.png"), fullPage: true });

// The dry run shows the rewritten article with the changed line marked.
await page.click("#nav-dryrun");
await page.fill("#dryrun-text", "Subject: try\nNewsgroups: test\n\nbody\n");
await page.click("#dryrun-go");
await page.waitForSelector("#dryrun-result .changed");
check((await page.textContent("#dryrun-result .changed")).includes("X-Brindle-Test: from the browser"),
      "the dry run marks the inserted header");

clearTimeout(deadline);
for (const c of cleanups.reverse()) { try { await c(); } catch { /* going anyway */ } }
console.log("browser test passed");
process.exit(0);
