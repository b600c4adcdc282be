// The status page of a device. Whatever the device says becomes text, never markup.
"use strict";

const period = 2000; // milliseconds between two readings
const kept = 60; // readings in a chart
const rarely = 15; // readings between two of what hardly changes
const weakest = -95, strongest = -40; // dBm at the ends of a signal bar

// ---- Words

const words = new Map(); // texts of the page, in English, and the device's translations of them
let english = localStorage.getItem("language") === "en";

const translated = (text) => english ? text : words.get(text) || text;

function word(text) {
  if (!words.has(text)) words.set(text, null);
  const element = make("span", "", translated(text));
  element.dataset.word = text;
  return element;
}

// Asks for the words that are new since the last time.
async function learn() {
  const asked = [...words.keys()].filter((text) => words.get(text) === null);
  if (!asked.length) return;
  const answer = await fetch("cgi-bin/words", { method: "POST", body: asked.join("\n") + "\n" });
  for (const line of (await answer.text()).split("\n")) {
    const [text, translation] = line.split("\t");
    if (translation !== undefined) words.set(text, translation || text);
  }
  speak();
}

function speak() {
  const other = words.get("English");
  document.documentElement.lang = translated("en");
  document.getElementById("languages").hidden = !other || other === "English";
  document.getElementById("other").textContent = other;
  document.getElementById("english").ariaPressed = english;
  document.getElementById("other").ariaPressed = !english;
  for (const element of document.querySelectorAll("[data-word]")) element.textContent = translated(element.dataset.word);
}

function choose(isEnglish) {
  english = isEnglish;
  localStorage.setItem("language", english ? "en" : "device");
  speak();
  drawAll();
}

// ---- Elements

const isAbsent = (value) => value === null || value === undefined || value === "";

function make(tag, className, ...children) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  element.append(...children.map((child) => child instanceof Node ? child : isAbsent(child) ? "–" : String(child)));
  return element;
}

function draw(tag, attributes, ...children) {
  const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
}

// A list of facts from pairs of a name and a value. What is absent has no row.
function facts(...pairs) {
  const known = pairs.filter(([, value]) => !isAbsent(value));
  return make("dl", "", ...known.flatMap(([name, value]) => [make("dt", "", word(name)), make("dd", "", value)]));
}

function bar(share, className) {
  const fill = make("i", className);
  fill.style.width = `${Math.round(100 * Math.min(1, Math.max(0, share)))}%`;
  return make("span", "bar", fill);
}

// A section changes only if its content does, so that marked text stays marked.
function show(id, articles) {
  const place = document.querySelector(`#${id} .cards`);
  const drawn = make("div", "cards", ...(articles.length ? articles : [make("p", "nothing", word("Nothing to show"))]));
  if (!place.isEqualNode(drawn)) place.replaceWith(drawn);
}

// ---- Numbers

const number = (value, digits = 0) => new Intl.NumberFormat(translated("en"), { maximumFractionDigits: digits }).format(value);
const measured = (value, unit) => isAbsent(value) ? null : `${number(value, 1)} ${unit}`;

function scaled(value, unit) {
  const prefixes = ["", "k", "M", "G", "T"];
  let step = 0;
  for (; value >= 1000 && step < prefixes.length - 1; step++) value /= 1000;
  return `${number(value, step > 0 && value < 100 ? 1 : 0)} ${prefixes[step]}${unit}`;
}

// A counter: shown short, with the exact number as its value and in the tip.
function counter(value, unit) {
  if (isAbsent(value)) return null;
  const element = make("data", "", unit ? scaled(value, unit) : number(value));
  element.value = element.title = value;
  return element;
}

// Counters have 32 bits and wrap. One that seems to have grown by more than half of that was set to zero.
function growth(now, before) {
  const difference = (now - before) >>> 0;
  return difference < 0x80000000 ? difference : 0;
}

// ---- Readings

const device = { net: null, product: null, records: null, links: [], radios: [] };
const readings = new Map(); // of each interface: time, rates

async function ask(query) {
  const answer = await fetch(`cgi-bin/facts?${query}`, { cache: "no-store", signal: AbortSignal.timeout(10000) });
  if (!answer.ok) throw new Error(answer.statusText);
  const text = await answer.text();
  return text.trim() ? JSON.parse(text) : null;
}

const askAbout = (command, name) => ask(`${command}=${encodeURIComponent(name)}`);

async function readRadio({ name, set }) {
  const [radio, wireless, peers] = await Promise.all(["radio", "wireless", "peers"].map((command) => askAbout(command, name)));
  return { ...radio, ...wireless, name, set, peers: peers?.peers || [] };
}

async function readRarely() {
  [device.product, device.records] = await Promise.all([ask("product"), ask("records")]);
  const names = device.net.interfaces.map(({ name }) => name);
  const radios = new Set(device.product?.capabilities?.radios.map(({ master }) => master).filter(Boolean));
  device.links = [];
  for (const name of names) {
    const link = await askAbout("ethernet", name);
    if (link) device.links.push(link);
    if (await askAbout("wireless", name)) radios.add(name);
  }
  device.radios = [];
  for (const name of radios) {
    const channel = await askAbout("config", `wireless.${name}.channel`), ssid = await askAbout("config", `wireless.${name}.ssid`);
    device.radios.push({ name, peers: [], set: { channel: channel?.value, ssid: ssid?.value } });
  }
}

function remember({ name, rx_bytes, tx_bytes }, time) {
  const rows = readings.get(name) || [];
  const last = rows.at(-1);
  const rate = (now, before) => !last || isAbsent(now) || isAbsent(before) ? null : 8000 * growth(now, before) / (time - last.time);
  rows.push({ time, rx_bytes, tx_bytes, rx: rate(rx_bytes, last?.rx_bytes), tx: rate(tx_bytes, last?.tx_bytes) });
  readings.set(name, rows.slice(-kept));
}

async function read(turn) {
  device.net = await ask("net");
  for (const entry of device.net.interfaces) remember(entry, performance.now());
  if (turn % rarely === 0) await readRarely();
  device.radios = await Promise.all(device.radios.map(readRadio));
}

// ---- Sections

// Received bits are above the line, sent ones below it; the newest reading is at the right.
function chart(rows) {
  const width = 300, height = 72, middle = height / 2;
  const highest = Math.max(1000, ...rows.flatMap(({ rx, tx }) => [rx || 0, tx || 0]));
  const x = (row) => (width - (rows.at(-1).time - row.time) / (period * (kept - 1)) * width).toFixed(1);
  const area = (key, sign) => {
    const known = rows.filter((row) => row[key] !== null);
    if (known.length < 2) return "";
    const points = known.map((row) => `${x(row)},${(middle - sign * row[key] / highest * (middle - 2)).toFixed(1)}`);
    return `M${x(known[0])},${middle}L${points.join("L")}L${x(known.at(-1))},${middle}Z`;
  };
  return make("figure", "", make("figcaption", "", highest > 1000 ? scaled(highest, "bit/s") : " "),
    draw("svg", { viewBox: `0 0 ${width} ${height}`, preserveAspectRatio: "none" },
      draw("path", { class: "rx", d: area("rx", 1) }), draw("path", { class: "tx", d: area("tx", -1) }),
      draw("line", { x1: 0, x2: width, y1: middle, y2: middle })));
}

function rate(key, arrow, name, bits, bytes) {
  return make("p", key, make("span", "", arrow, " ", word(name)), make("strong", "", isAbsent(bits) ? null : scaled(bits, "bit/s")),
    make("small", "", counter(bytes, "B")));
}

function interfaceCard(entry) {
  const rows = readings.get(entry.name), { rx, tx } = rows.at(-1);
  const addresses = [...entry.ipv4, ...entry.ipv6].map((address) => make("code", "", address));
  return make("article", entry.status, make("h3", "", make("span", "", entry.name), make("em", "", word(entry.status))), chart(rows),
    make("div", "rates", rate("rx", "↓", "Received", rx, entry.rx_bytes), rate("tx", "↑", "Sent", tx, entry.tx_bytes)),
    facts(["Address", addresses.length ? make("span", "list", ...addresses) : null],
      ["Hardware address", entry.hwaddr && make("code", "", entry.hwaddr)], ["Parent", entry.master],
      ["Errors", counter(entry.rx_errors + entry.tx_errors || null)], ["Dropped", counter(entry.rx_dropped + entry.tx_dropped || null)]));
}

// A chain that receives nothing has 0.
function peerRow(peer) {
  const chains = [peer.rssi0, peer.rssi1, peer.rssi2].filter((dbm) => dbm).map((dbm) => make("div", "chain",
    bar((dbm - weakest) / (strongest - weakest), dbm > -65 ? "good" : dbm > -80 ? "fair" : "poor"), make("span", "", `${dbm} dBm`)));
  return make("li", "", make("code", "", peer.mac), make("div", "", ...chains));
}

function radioCard(radio) {
  const channel = isAbsent(radio.channel) ? radio.set.channel : radio.channel;
  const origin = isAbsent(radio.channel) && channel ? [make("small", "", word("configured"))] : [];
  const share = (part, all) => isAbsent(part) || !all ? null : `${number(100 * part / all, 2)} %`;
  const times = [radio.state_init, radio.state_scan, radio.state_auth, radio.state_assoc, radio.state_run];
  return make("article", "radio",
    make("div", "", make("h3", "", make("span", "", radio.name)),
      make("p", "channel", make("small", "", word("Channel")), make("strong", "", channel), ...origin),
      facts(["Network", radio.essid || radio.set.ssid], ["Mode", radio.mode_name], ["Security", radio.security],
        ["Frequency", radio.frequency ? scaled(radio.frequency, "Hz") : null], ["Bit rate", radio.bit_rate ? scaled(radio.bit_rate, "bit/s") : null],
        ["Transmit power", measured(radio.txpower, "dBm")], ["Band", radio.ieee_band], ["Antenna gain", measured(radio.antenna_gain, "dBi")],
        ["Country", radio.countrycode], ["Packets sent", counter(radio.tx_total)], ["Retried", share(radio.tx_retry, radio.tx_total)],
        ["Packets received", counter(radio.rx_total)], ["Dropped", share(radio.rx_errors, radio.rx_total)],
        ["Connected", share(radio.state_run, times.reduce((sum, time) => sum + time, 0))])),
    make("div", "peers", make("h4", "", word("Connected stations"), make("em", "", radio.peers.length)),
      radio.peers.length ? make("ul", "", ...radio.peers.map(peerRow)) : make("p", "nothing", word("No stations"))));
}

function linkRow(link) {
  const isUp = link.link === "yes";
  return make("tr", isUp ? "up" : "down", make("td", "", make("strong", "", link.name), make("code", "", link.perm_addr)),
    make("td", "", isAbsent(link.speed) ? null : scaled(1e6 * link.speed, "bit/s")), make("td", "", link.duplex && word(link.duplex)),
    make("td", "", make("em", "", link.link && word(isUp ? "up" : "down"))));
}

function rangeRow(range) {
  return make("tr", "", make("td", "", range.range && `${range.range} MHz`), make("td", "", measured(range.max_eirp, "dBm")),
    make("td", "", measured(range.max_width, "MHz")), make("td", "", range.dfs_required && word(range.dfs_required)));
}

function table(names, rows) {
  return make("table", "", make("thead", "", make("tr", "", ...names.map((name) => make("th", "", word(name))))), make("tbody", "", ...rows));
}

function productCard(product) {
  const can = product.capabilities || { radios: [] };
  const ranges = can.radios.flatMap((radio) => radio.frequencies.map(rangeRow));
  return make("article", "", facts(["Product", product.product_name], ["Manufacturer", product.manufacturer], ["Serial number", make("code", "", product.serial_no)],
    ["Firmware version", make("code", "", product.firmware_version)], ["Hardware", can.hardware], ["Product number", can.id], ["Country", can.countrycode]),
  ...(ranges.length ? [table(["Frequencies", "Power", "Width", "Radar detection"], ranges)] : []));
}

function recordRow({ id, size, bytes }) {
  return make("tr", "", make("td", "", id), make("td", "", size), make("td", "", make("code", "", bytes.replace(/..(?=.)/g, "$& "))));
}

function drawAll() {
  const { net, product, records, links, radios } = device;
  if (!net) return;
  for (const [id, text] of [["manufacturer", product?.manufacturer], ["name", product?.product_name], ["version", product?.firmware_version]]) {
    document.getElementById(id).textContent = text || "";
  }
  document.title = product?.product_name || "devfacts";
  const order = ({ name, status }) => (name === "lo" ? 2 : 0) + (status === "up" ? 0 : 1);
  show("interfaces", [...net.interfaces].sort((a, b) => order(a) - order(b)).map(interfaceCard));
  show("radios", radios.map(radioCard));
  show("links", links.length ? [make("article", "", table(["Name", "Speed", "Duplex", "Link"], links.map(linkRow)))] : []);
  show("product", product ? [productCard(product)] : []);
  show("records", records?.records.length ? [make("article", "", table(["Record", "Size", "Content"], records.records.map(recordRow)))] : []);
}

function report(text, isLive) {
  const state = document.getElementById("state");
  state.className = isLive ? "live" : "lost";
  state.lastElementChild.replaceChildren(word(text));
}

async function run() {
  for (const element of document.querySelectorAll("[data-word]")) {
    element.dataset.word = element.textContent;
    words.set(element.textContent, null);
  }
  for (const text of ["English", "en", "No answer from the device"]) words.set(text, null);
  document.getElementById("english").onclick = () => choose(true);
  document.getElementById("other").onclick = () => choose(false);
  for (let turn = 0; ; turn++) {
    try {
      await read(turn);
      drawAll();
      report("Live", true);
      await learn();
      document.body.dataset.turn = turn;
    } catch {
      report("No answer from the device", false);
    }
    await new Promise((resolve) => setTimeout(resolve, period));
  }
}

run();
