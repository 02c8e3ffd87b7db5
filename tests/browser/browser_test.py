#!/usr/bin/env python3
"""The page in headless Chromium: a journal's picture from file://, and the navigator's live view.

    browser_test.py ZELTOPORT NAVIGATOR      77: skipped, there is no browser to be had
"""

import json
import math
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
try:
    from selenium import webdriver
    from selenium.webdriver import ActionChains, Keys
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
except ImportError:
    print("skipped: the package python3-selenium is not there")
    sys.exit(SKIPPED)

ARRIVAL = """
new MutationObserver(() => {
  const title = document.querySelector('[data-kind=destination] title');
  if (title && title.textContent !== window.seen) {
    window.seen = title.textContent;
    window.arrived = Date.now();
  }
}).observe(document.getElementById('map'), {childList: true, subtree: true});
"""
GO = """
const slider = document.getElementById('slider'), begin = performance.now();
slider.value = arguments[0];
slider.dispatchEvent(new Event('input'));
document.body.getBoundingClientRect();
return performance.now() - begin;
"""
COLOURS = """
return ['body', 'header p', '.row', '#state dt'].map((name) => {
  const element = document.querySelector(name);
  return [getComputedStyle(element).color, getComputedStyle(document.body).backgroundColor];
});
"""


def journal(requests, replies=None):
    for i, request in enumerate(requests):
        moment = f"2010-05-15T09:{i // 60 % 60:02}:{i % 60:02}.000Z"
        reply = (replies or {}).get(i, "A|0")
        yield json.dumps({"time": moment, "generation": 2, "bytes": request + "\n",
                          "reply": reply, "microseconds": 100})


def luminance(colour):
    parts = [int(part) / 255 for part in re.findall(r"\d+", colour)[:3]]
    linear = [p / 12.92 if p <= 0.04045 else ((p + 0.055) / 1.055) ** 2.4 for p in parts]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(a, b):
    light, dark = sorted((luminance(a), luminance(b)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        for switch in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1200,900",
                       "--disable-dev-shm-usage", "--disable-background-networking"):
            options.add_argument(switch)
        options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")),
                                       options=options)
        self.find = lambda selector: self.driver.find_element(By.CSS_SELECTOR, selector)
        self.all = lambda selector: self.driver.find_elements(By.CSS_SELECTOR, selector)
        self.run = self.driver.execute_script

    def emulate(self, command, **parameters):
        self.driver.execute_cdp_cmd(f"Emulation.{command}", parameters)

    def text(self, selector):
        return self.find(selector).get_attribute("textContent")

    def hover(self, x, y):
        """Coordinates that the page tells for a point of the map, from its top left corner."""
        chart = self.find("#map")
        size = chart.size
        ActionChains(self.driver, 0).move_to_element_with_offset(
            chart, int(x - size["width"] / 2), int(y - size["height"] / 2)).perform()
        return [float(part) for part in self.text("#pointer").split(",")]

    def spot(self, kind):
        """Where a thing is, in pixels from the map's top left corner."""
        return self.run("""
            const at = document.querySelector(arguments[0]).getScreenCTM();
            const box = document.getElementById('map').getBoundingClientRect();
            return [at.e - box.left, at.f - box.top];""", f"[data-kind={kind}]")

    def wait(self, condition, what):
        end = time.monotonic() + 10
        while not condition():
            assert time.monotonic() < end, f"in vain: {what}"
            time.sleep(0.01)

    def requests(self):
        messages = [json.loads(entry["message"])["message"]
                    for entry in self.driver.get_log("performance")]
        urls = [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"]
        return [url for url in urls if not url.startswith(("data:", "chrome:"))]


def check_map(browser):
    browser.run("arguments[0].scrollIntoView()", browser.find("#map"))
    for kind in ("waypoint", "destination", "position", "centre"):
        element = browser.find(f"[data-kind={kind}]")
        place = [float(element.get_attribute(f"data-{name}")) for name in ("latitude", "longitude")]
        title = element.find_element(By.CSS_SELECTOR, "title").get_attribute("textContent")
        assert f"{place[0]:.6f}, {place[1]:.6f}" in title, title
        shown = browser.hover(*browser.spot(kind))
        pixel = abs(browser.hover(200, 200)[1] - browser.hover(100, 200)[1]) / 100
        assert math.dist(place, shown) < 1.5 * pixel, f"{kind}: {place}, but shown at {shown}"
    assert browser.all("[data-kind=route] title") and browser.all("[data-kind=track] title")


def check_keyboard(browser):
    chart = browser.find("#map")
    before, scale = browser.spot("waypoint"), browser.text("[data-kind=scale] text")
    chart.send_keys(Keys.ARROW_RIGHT)
    assert browser.spot("waypoint")[0] < before[0] - 20
    chart.send_keys("+++")
    assert browser.text("[data-kind=scale] text") != scale
    chart.send_keys("0")
    assert math.dist(browser.spot("waypoint"), before) < 1
    slider = browser.find("#slider")
    slider.send_keys(Keys.HOME)
    assert not browser.all("[data-kind=destination]"), "the slider moves the map"
    slider.send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
    assert browser.all("[data-kind=destination]")
    assert "Goto" in browser.text("#window [aria-current]"), "and the list with it"


def check_failure_and_box(browser):
    browser.find("#by-result").send_keys("all failures")
    browser.wait(lambda: browser.text("#count").startswith("1 of"), "the filter")
    browser.find("#window .row").click()
    assert "no waypoint" in browser.text("#why"), browser.text("#why")
    browser.find("#by-result").send_keys("all")
    browser.find("#slider").send_keys(Keys.END)
    assert "Salida | en 5" in browser.text("#box"), browser.text("#box")
    assert [b.text for b in browser.all(".box-buttons button")] == ["Yes", "No"]


def check_looks(browser):
    for scheme in ("light", "dark"):
        browser.emulate("setEmulatedMedia",
                        features=[{"name": "prefers-color-scheme", "value": scheme}])
        colours = browser.run(COLOURS)
        assert (luminance(colours[0][1]) > 0.5) == (scheme == "light")
        assert min(contrast(*pair) for pair in colours) >= 4.5, colours
    browser.emulate("setDeviceMetricsOverride", width=360, height=700, deviceScaleFactor=2,
                    mobile=True)
    assert browser.run("return document.documentElement.scrollWidth") <= 360
    browser.emulate("clearDeviceMetricsOverride")


def check_picture(browser, port, folder):
    fix = "E|$GPRMC,0930{:02}.000,A,4251.{:04},N,00240.0000,W,20.00,90.00,150510,,,A*00"
    requests = ["M|Plaza,x,42.8467,-2.6727,525,flag", "F|0", "S|42.9,-2.5,,,0", "N|Museo",
                "O|42.86,-2.66,1500", fix.format(0, 0), fix.format(1, 90), "T|1|Aviso|Salida | en 5|4|10"]
    (folder / "few").write_text("\n".join(journal(requests, {1: "G|zelto-navigator", 3: "B|304"})))
    with open(folder / "few.html", "w", encoding="utf-8") as page:
        subprocess.run([port, "picture", folder / "few"], stdout=page, check=True)
    browser.driver.get(f"file://{folder}/few.html")
    for check in (check_map, check_keyboard, check_failure_and_box, check_looks):
        check(browser)


def check_many(browser, port, folder):
    many = [f"E|$GPRMC,093000.000,A,{4200 + i / 1000:.4f},N,00240.0000,W,9,90,150510,,,A*00" if i % 3
            else f"S|42.{i:05},-2.6,,,0" for i in range(10_000)]
    (folder / "many").write_text("\n".join(journal(many)))
    with open(folder / "many.html", "w", encoding="utf-8") as page:
        subprocess.run([port, "picture", folder / "many"], stdout=page, check=True)
    browser.driver.get(f"file://{folder}/many.html")
    steps = [browser.run(GO, index * 7919 % 10_000) for index in range(40)]
    print(f"10,000 requests: the slider takes {statistics.median(steps):.1f} ms (median of 40)")
    assert statistics.median(steps) < 100
    assert len(browser.all("#window .row")) < 100, "only the rows in sight"


def check_live(browser, port, link):
    call = lambda *words: subprocess.run([port, "--quiet", *words], capture_output=True, text=True)
    browser.driver.get(link)
    browser.wait(lambda: browser.text("#live-status").startswith("Connected"), "the connection")
    browser.run(ARRIVAL)
    delays = []
    for i in range(50):
        begin = time.time() * 1000
        assert call("goto", f"42.{i + 10}", "-2.5").returncode == 0
        browser.wait(lambda: f"42.{i + 10}0000" in (browser.run("return window.seen") or ""), "a goto")
        delays.append(browser.run("return window.arrived") - begin)
    print(f"a goto from the shell appears after {statistics.median(delays):.0f} ms (median of 50)")
    assert statistics.median(delays) <= 100
    call("message-box", "Aviso", "Salida", "1", "10")
    browser.wait(lambda: browser.all(".box-buttons button:enabled"), "the box")
    browser.all(".box-buttons button")[1].click()
    browser.wait(lambda: call("get", "box-answer").stdout == "Cancel\n", "the answer")
    browser.find("#latitude").send_keys("42.2")
    browser.find("#longitude").send_keys("-2.5", Keys.ENTER)
    browser.wait(lambda: call("get", "position").stdout.startswith("42.200000,-2.5"), "the place")
    browser.wait(lambda: browser.all("[data-kind=position]"), "the arrow")
    hold_and_drag(browser, *browser.spot("position"))
    browser.wait(lambda: not call("get", "position").stdout.startswith("42.200000"), "the drag")
    browser.find("#draw").click()
    dragged = call("get", "position").stdout
    hold_and_drag(browser, 60, 200)
    browser.wait(lambda: call("get", "position").stdout != dragged, "the drive")
    browser.find("#halt").click()
    browser.find("#fault-letters").send_keys("S")
    browser.find("#fault-silent").click()
    browser.wait(lambda: call("goto", "1", "2").returncode == 5, "the fault")


def hold_and_drag(browser, x, y):
    chart = browser.find("#map")
    browser.run("arguments[0].scrollIntoView()", chart)
    middle = chart.size["width"] / 2, chart.size["height"] / 2
    ActionChains(browser.driver, 50).move_to_element_with_offset(
        chart, int(x - middle[0]), int(y - middle[1])).click_and_hold().move_by_offset(
            40, 25).move_by_offset(40, 25).release().perform()


def serve(browser, port, navigator, folder):
    os.environ["ZELTO_DEVICE"] = str(folder / "device")
    navigator = shutil.copy(navigator, folder)  # where its path is short enough
    subprocess.run([port, "device", "init", "--navigator", navigator], check=True,
                   stdout=subprocess.DEVNULL)
    with open(folder / "log", "w+", encoding="utf-8") as log, \
            subprocess.Popen([navigator, "--view"], stdout=log) as process:
        try:
            said = lambda: (folder / "log").read_text()
            browser.wait(lambda: "view " in said(), "the link")
            check_live(browser, port, re.search("view (.*)", said())[1])
            browser.driver.get("about:blank")
        finally:
            process.terminate()


def main():
    port, navigator = sys.argv[1:3]
    if not shutil.which("chromedriver"):
        print("skipped: the package chromium-driver is not there")
        return SKIPPED
    browser = Browser()
    with tempfile.TemporaryDirectory(prefix="zelto") as name:
        folder = pathlib.Path(name)
        try:
            check_picture(browser, port, folder)
            check_many(browser, port, folder)
            outside = [url for url in browser.requests() if not url.startswith(f"file://{folder}/")]
            assert not outside, f"requests leave the page: {outside}"
            serve(browser, port, navigator, folder)
            outside = [url for url in browser.requests() if not url.startswith("http://127.0.0.1:")]
            assert not outside, f"requests leave the page: {outside}"
            errors = [entry for entry in browser.driver.get_log("browser")
                      if entry["level"] == "SEVERE"]
            assert not errors, errors
        finally:
            browser.driver.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
