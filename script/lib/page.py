#!/usr/bin/env python3
"""Drives the status page in a browser: page.py check URL DEVICE SERVER_PID, page.py picture URL FILE."""
import base64
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request


class Browser:
    """Chromium, spoken to over a pipe: JSON messages, each ended by a NUL."""

    def __init__(self, profile):
        commands, self.commands = os.pipe()
        self.events, events = os.pipe()
        arguments = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
                     "--disable-component-update --disable-sync --hide-scrollbars --remote-debugging-pipe").split()

        def place():
            os.dup2(commands, 13)
            os.dup2(events, 14)
            os.dup2(13, 3)
            os.dup2(14, 4)

        self.process = subprocess.Popen(["chromium", *arguments, f"--user-data-dir={profile}"], preexec_fn=place,
                                        close_fds=False, stderr=subprocess.DEVNULL)
        self.buffer, self.number, self.session = b"", 0, None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            while b"\0" not in self.buffer:
                part = os.read(self.events, 1 << 20)
                if not part:
                    sys.exit("the browser has ended")
                self.buffer += part
            answer, self.buffer = self.buffer.split(b"\0", 1)
            answer = json.loads(answer)
            if answer.get("id") == self.number:
                if "error" in answer:
                    sys.exit(f"{method}: {answer['error']}")
                return answer["result"]

    def value(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            sys.exit(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def open(self, url, width, height, scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale, mobile=width < 600)
        self.call("Page.navigate", url=url)

    def close(self):
        self.call("Browser.close")
        self.process.wait(20)


def wait_for(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"FAIL {what}")
        time.sleep(0.3)
    print(f"OK   {what}")


def facts(url, query):
    with urllib.request.urlopen(f"{url}cgi-bin/facts?{query}") as answer:
        text = answer.read()
    return json.loads(text) if text.strip() else {}


def shown(browser, section):
    """The articles of a section: their texts, and the exact numbers of the counters in them."""
    return browser.value(f"""[...document.querySelectorAll('#{section} article')].map((article) => ({{
        name: article.querySelector('h3 span')?.textContent, text: article.innerText,
        values: [...article.querySelectorAll('data')].map((data) => data.value) }}))""")


def lacking(articles, rows, key, texts, values=lambda row: []):
    """What the tool says of each row and its article does not."""
    lack = []
    for row in rows:
        article = next((article for article in articles if article["name"] == row[key]), None)
        if article is None:
            lack.append(row[key])
            continue
        lack += [text for text in map(str, filter(None, texts(row))) if text not in article["text"]]
        lack += [value for value in map(str, values(row)) if value not in article["values"]]
    return lack


def lacking_of_all(browser, url):
    product, records = facts(url, "product"), facts(url, "records")["records"]
    can, net = product["capabilities"], facts(url, "net")["interfaces"]
    radios = [{"peers": []} | facts(url, f"radio={name}") | facts(url, f"peers={name}") | {"name": name, **{
        key: facts(url, f"config=wireless.{name}.{key}").get("value") for key in ("channel", "ssid")}}
        for name in ("ra0", "ra1")]
    links = [link for link in (facts(url, "ethernet=" + urllib.parse.quote(entry["name"], safe="")) for entry in net) if link]
    spaced = lambda text: " ".join(text[i:i + 2] for i in range(0, len(text), 2))
    one = lambda section: [dict(article, name=section) for article in shown(browser, section)]
    assert len(net) >= 6 and len(radios[0]["peers"]) >= 2 and len(links) >= 4 and len(records) >= 4
    return (
        lacking(shown(browser, "interfaces"), net, "name", lambda row: [row["hwaddr"], *row["ipv4"], *row["ipv6"]],
                lambda row: [row["rx_bytes"], row["tx_bytes"]])
        + lacking(shown(browser, "radios"), radios, "name",
                  lambda row: [row["channel"], row["ssid"], row["ieee_band"], row["countrycode"]]
                  + [peer["mac"] for peer in row["peers"]] + [f"{peer['rssi0']} dBm" for peer in row["peers"]],
                  lambda row: [row[key] for key in ("tx_total", "rx_total") if row.get(key) is not None])
        + lacking(one("links"), [{"name": "links"}], "name",
                  lambda row: [text for link in links for text in (link["name"], link["perm_addr"])])
        + lacking(one("product"), [{"name": "product"}], "name",
                  lambda row: [product[key] for key in ("product_name", "manufacturer", "serial_no", "firmware_version")]
                  + [can["hardware"], can["id"]] + [f"{range['range']} MHz" for radio in can["radios"] for range in radio["frequencies"]])
        + lacking(one("records"), [{"name": "records"}], "name", lambda row: [spaced(record["bytes"]) for record in records]))


def check(browser, url, device, server):
    text = lambda selector: browser.value(f"document.querySelector({json.dumps(selector)})?.textContent")
    browser.open(url, 1240, 1000)
    wait_for("the page reads the device", lambda: browser.value("Number(document.body?.dataset.turn) >= 1"))
    lack = ["nothing was compared"]

    def agrees():
        lack[:] = lacking_of_all(browser, url)
        return not lack
    try:
        wait_for("every section shows what the tool prints", agrees)
    finally:
        print(*(f"     missing: {item}" for item in lack), sep="\n", end="\n" if lack else "")

    markup = "<img src=x onerror=document.title=1>&amp;\"'"
    wait_for("hostile names are text", lambda: text("h1") == markup and browser.value("document.title") == markup
             and "<script>document.title=2</script>" in text("#radios") and "<b>&amp;\"'" in text("#interfaces")
             and browser.value("document.querySelectorAll('main :is(img, script, b, i:not(.bar i))').length") == 0)

    browser.value("document.getElementById('english').click()")
    wait_for("English", lambda: text("#interfaces h2") == "Interfaces" and "Connected stations" in text("#radios"))
    browser.value("document.getElementById('other').click()")
    wait_for("the language of the device", lambda: text("#interfaces h2") == "Schnittstellen"
             and "Verbundene Stationen" in text("#radios") and text("#records h2") == "<i>Werksdaten")

    with open(f"{device}/proc/net/ra0/peers", "a", encoding="utf-8") as peers:
        peers.write("\nPeer MAC address: 02:0c:43:26:60:7f\nRx last RSSI0: -83\n")
    wait_for("a new station appears by itself", lambda: "02:0C:43:26:60:7F" in text("#radios") and "-83 dBm" in text("#radios"))

    browser.open(url, 390, 844)
    wait_for("a telephone's width is enough", lambda: browser.value("Number(document.body?.dataset.turn) >= 1")
             and browser.value("document.documentElement.scrollWidth") <= 390)

    os.kill(int(server), signal.SIGTERM)
    wait_for("a device that does not answer is noticed", lambda: text("#state") == "Keine Antwort vom Gerät")


def picture(browser, url, file):
    """The page in a wide window, and in the device's language on a telephone, side by side."""
    images = []
    for width, height, button, scheme, readings in ((1240, 1700, "english", "light", 45), (400, 1250, "other", "dark", 30)):
        browser.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        browser.open(url, width, height)
        wait_for(f"a window of {width} pixels", lambda: browser.value("Number(document.body?.dataset.turn) >= 1"))
        browser.value(f"document.getElementById('{button}').click()")
        wait_for(f"{readings} readings", lambda: browser.value(f"Number(document.body?.dataset.turn) >= {readings}"), 150)
        images.append(browser.call("Page.captureScreenshot", format="png")["data"])
    style = "border-radius:14px;box-shadow:0 8px 30px #0003;object-fit:cover;object-position:top;height:1020px"
    pair = "".join(f"<img style='{style};width:{width}px' src='data:image/png;base64,{image}'>"
                   for width, image in zip((900, 326), images))
    browser.open("about:blank", 1320, 1080)
    tree = browser.call("Page.getFrameTree")["frameTree"]["frame"]["id"]
    browser.call("Page.setDocumentContent", frameId=tree, html="<body style='margin:0;background:#d5dce7;height:1080px;display:flex;"
                 f"gap:32px;justify-content:center;align-items:center'>{pair}")
    wait_for("the picture", lambda: browser.value("[...document.images].every((image) => image.complete)"))
    image = base64.b64decode(browser.call("Page.captureScreenshot", format="png")["data"])
    with open(file, "wb") as output:
        subprocess.run(["pngquant", "--quality", "60-95", "-"], input=image, stdout=output, check=True)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as profile:
        browser = Browser(profile)
        try:
            {"check": check, "picture": picture}[sys.argv[1]](browser, *sys.argv[2:])
        finally:
            browser.close()
