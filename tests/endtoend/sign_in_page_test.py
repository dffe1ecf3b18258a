#!/usr/bin/python3
"""The sign-in page in a real browser, Chromium without a window: by the keyboard alone, narrow and large, light and
dark, with bad input, and by one press where somebody signed in before. The first argument is the folder of the programs."""

import json
import os
import ssl
import subprocess
import sys
import tempfile
import unittest
import urllib.request

from selenium import webdriver
from selenium.webdriver.chrome.service import Service as Driver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

from local_service import PATIENCE, Service

PROGRAMS = sys.argv.pop(1)

# What shows of an element: where it is, whether its content fits, its colours against what is below it.
MEASURE = """
const seen = element => element.getClientRects().length && getComputedStyle(element).visibility === 'visible';
const numbers = colour => colour.match(/[\\d.]+/g).map(Number);
const below = element => {
  for (let e = element; e; e = e.parentElement) {
    const colour = numbers(getComputedStyle(e).backgroundColor);
    if (colour.length < 4 || colour[3] === 1) return colour;
  }
  return [255, 255, 255];
};
const light = colour => {
  const [r, g, b] = colour.slice(0, 3).map(v => v / 255).map(v => v <= .04045 ? v / 12.92 : ((v + .055) / 1.055) ** 2.4);
  return .2126 * r + .7152 * g + .0722 * b;
};
const contrast = (a, b) => {
  const [x, y] = [light(a), light(b)].sort((p, q) => q - p);
  return (x + .05) / (y + .05);
};
return [...document.querySelectorAll('main, h1, p, label, input:not([type=hidden]), button, a, svg')].filter(seen)
  .map(element => {
    const style = getComputedStyle(element), box = element.getBoundingClientRect();
    const field = element.tagName === 'INPUT';
    return {
      name: element.tagName + '#' + (element.id || element.textContent.slice(0, 30)), tag: element.tagName,
      left: box.left, right: box.right, width: box.width, height: box.height,
      fits: field || element.scrollWidth <= element.clientWidth + 1,
      shown: style.overflow === 'visible' || field || element.tagName === 'svg',
      text: contrast(numbers(style.color), below(element)),
      edge: field ? contrast(numbers(style.borderTopColor), below(element.parentElement)) : null,
    };
  });
"""


class Protocol(Service):
    """The service, spoken to as the panel does."""

    def __init__(self):
        super().__init__(os.path.join(PROGRAMS, "quillmate-service"), [])
        trust = ssl.create_default_context(cafile=self.authority)
        self.opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}), urllib.request.HTTPSHandler(context=trust)
        )

    def get(self, path, token=None):
        request = urllib.request.Request(self.origin + path, headers={"Authorization": "Bearer " + token} if token else {})
        with self.opener.open(request, timeout=PATIENCE) as reply:
            return json.load(reply)

    def session(self, identifier=""):
        return self.get("/plugin-auth/session-request/" + identifier)


def start_browser(folder):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    arguments = [
        "--headless=new",
        "--user-data-dir=" + folder + "/profile",
        "--no-first-run",
        "--no-proxy-server",
        "--disable-gpu",
        "--disable-dev-shm-usage",
        "--disable-background-networking",
        "--disable-component-update",
        "--lang=en",
    ]
    # Chromium's own sandbox takes an ordinary user and a kernel, or a container, that gives them a namespace.
    if os.getuid() == 0 or subprocess.run(["unshare", "--user", "true"], stderr=subprocess.DEVNULL).returncode != 0:
        print("Chromium runs without its sandbox.", flush=True)
        arguments.append("--no-sandbox")
    for argument in arguments:
        options.add_argument(argument)
    # Nothing of the user's: neither their settings nor a proxy between the driver and this test.
    os.environ.update(HOME=folder, XDG_CONFIG_HOME=folder, XDG_CACHE_HOME=folder, NO_PROXY="*", no_proxy="*")
    browser = webdriver.Chrome(service=Driver("/usr/bin/chromedriver"), options=options)
    browser.set_page_load_timeout(PATIENCE)
    return browser


class SignInPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        cls.addClassCleanup(cls.folder.cleanup)
        cls.service = Protocol()
        cls.addClassCleanup(lambda: cls().assertEqual(cls.service.end(), 0))
        cls.browser = start_browser(cls.folder.name)
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.show_as(width=1280, height=800)
        self.begin_anew()

    # What a person does and sees.

    def begin_anew(self, known=False):
        """Opens the page of a new sign-in, in a browser that forgot the last one unless it shall be known."""
        if not known:
            self.browser.execute_cdp_cmd("Network.clearBrowserCookies", {})
        self.begun = self.service.session()
        self.open(self.begun["login_url"])

    def open(self, address):
        self.browser.get(address)

    def show_as(self, width=1280, height=800, scheme="light", text=16):
        self.text = text
        command = self.browser.execute_cdp_cmd
        size = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        command("Emulation.setDeviceMetricsOverride", size)
        command("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        command("Page.setFontSizes", {"fontSizes": {"standard": text, "fixed": text}})

    def field(self, name):
        return self.browser.find_element(By.ID, name)

    def focused(self):
        return self.browser.switch_to.active_element

    def keys(self, *keys):
        webdriver.ActionChains(self.browser).send_keys(*keys).perform()

    def heading(self):
        return self.browser.find_element(By.TAG_NAME, "h1").text

    def fill_in(self, name, email):
        for field, text in (("name", name), ("email", email)):
            self.field(field).clear()
            self.field(field).send_keys(text)

    def submit(self):
        """Sends the form and waits until another page is there."""
        page = self.browser.find_element(By.TAG_NAME, "html")
        self.browser.find_element(By.TAG_NAME, "button").click()
        self.wait_for_another(page)

    def wait_for_another(self, page):
        def is_there(browser):
            ready = browser.execute_script("return document.readyState") == "complete"
            return ready and browser.find_element(By.TAG_NAME, "html") != page

        WebDriverWait(self.browser, PATIENCE, 0.05, ignored_exceptions=[Exception]).until(is_there)

    def token(self):
        return self.service.session(self.begun["id"])["access_token"]

    def check_layout(self, name):
        """Nothing stands out, is clipped, or is hard to read."""
        width = self.browser.execute_script("return innerWidth")
        root = self.browser.find_element(By.TAG_NAME, "html")
        self.assertEqual(root.value_of_css_property("font-size"), f"{self.text}px")
        self.assertLessEqual(self.browser.execute_script("return document.scrollingElement.scrollWidth"), width, name)
        elements = self.browser.execute_script(MEASURE)
        self.assertIn("H1", [element["tag"] for element in elements])
        for element in elements:
            told = f"{name}: {element}"
            self.assertGreaterEqual(element["left"], 0, told)
            self.assertLessEqual(element["right"], width, told)
            self.assertTrue(element["fits"] and element["shown"], told)
            if element["tag"] != "svg":
                self.assertGreaterEqual(element["text"], 4.5, told)  # WCAG 2.1, 1.4.3
            if element["tag"] == "INPUT":
                self.assertGreaterEqual(element["edge"], 3, told)  # 1.4.11
            if element["tag"] in ("INPUT", "BUTTON", "A"):
                self.assertGreaterEqual(element["height"], 44, told)  # 2.5.5

    # The cases.

    def test_by_the_keyboard_alone(self):
        def check_focus(identifier, tag):
            element = self.focused()
            self.assertEqual((element.get_attribute("id") or "", element.tag_name), (identifier, tag))
            self.assertEqual(element.value_of_css_property("outline-style"), "solid")
            self.assertGreaterEqual(float(element.value_of_css_property("outline-width")[:-2]), 2)

        check_focus("name", "input")  # One can begin to type at once.
        self.keys("Zoë Müller-Łukasz")
        self.keys(Keys.TAB)
        check_focus("email", "input")
        self.keys("zoe@mail.example", Keys.TAB)
        check_focus("", "button")
        webdriver.ActionChains(self.browser).key_down(Keys.SHIFT).send_keys(Keys.TAB).key_up(Keys.SHIFT).perform()
        check_focus("email", "input")
        self.keys(Keys.TAB)
        self.assertIsNone(self.token())
        page = self.browser.find_element(By.TAG_NAME, "html")
        self.keys(Keys.RETURN)
        self.wait_for_another(page)
        self.assertEqual(self.heading(), "Signed in")
        self.assertIn("Signed in", self.browser.title)

        token = self.token()
        self.assertEqual(self.service.get("/api/v1/me", token), {"email": "zoe@mail.example", "name": "Zoë Müller-Łukasz"})
        # A reply may be lost on its way, so it is given again, and is still the only one.
        self.assertEqual(self.token(), token)
        self.browser.refresh()
        self.assertEqual(self.heading(), "Signed in")
        self.assertNotIn(token, self.browser.page_source + self.browser.current_url)

    def test_narrow_and_large_and_in_both_schemes(self):
        long_name = "Wolfeschlegelsteinhausenbergerdorff" * 4
        # The colours do not depend on the width, nor the places on the colours.
        for scheme, width, text in (("light", 360, 16), ("light", 360, 32), ("dark", 1280, 16)):
            name = f"{scheme}-{width}-{text}"
            self.show_as(width, 740, scheme, text)
            self.begin_anew()
            self.check_layout(name + "-form")
            self.fill_in(long_name, "not an address at all " + "x" * 80)
            self.submit()
            self.assertEqual(len(self.browser.find_elements(By.CLASS_NAME, "error")), 2)
            self.check_layout(name + "-errors")
            self.fill_in(long_name[:100], "maria@mail.example")
            self.submit()
            self.assertEqual(self.heading(), "Signed in")
            self.check_layout(name + "-done")
            self.begin_anew(known=True)
            self.check_layout(name + "-known")
        light, dark = (self.background(scheme) for scheme in ("light", "dark"))
        self.assertNotEqual(light, dark)

    def background(self, scheme):
        self.show_as(scheme=scheme)
        return self.browser.find_element(By.TAG_NAME, "body").value_of_css_property("background-color")

    def test_one_press_where_somebody_signed_in_before(self):
        def signed_in_as():
            self.assertEqual(self.heading(), "Signed in")
            return self.service.get("/api/v1/me", self.token())["name"]

        self.fill_in("Zoë", "zoe@mail.example")
        self.submit()
        self.assertEqual(signed_in_as(), "Zoë")
        cookie, = self.browser.get_cookies()
        self.assertEqual(
            (cookie["name"][:7], cookie["path"], cookie["secure"], cookie["httpOnly"], cookie["sameSite"]),
            ("__Host-", "/", True, True, "Strict"),
        )
        self.begin_anew(known=True)
        self.assertEqual(self.focused().text, "Continue as Zoë")
        self.submit()
        self.assertEqual(signed_in_as(), "Zoë")

        self.begin_anew(known=True)
        self.browser.find_element(By.LINK_TEXT, "Someone else").click()
        self.fill_in("Ben", "ben@mail.example")
        self.submit()
        self.assertEqual(signed_in_as(), "Ben")
        self.begin_anew(known=True)
        self.assertEqual(self.focused().text, "Continue as Ben")

    def test_bad_input_is_told_and_kept(self):
        good, odd = "maria@mail.example", "\"Maria\" <b>&amp; 'Co'"
        for name, email, wrong in (("", "", ["name", "email"]), ("   ", good, ["name"]), (odd, "maria@mail", ["email"])):
            with self.subTest(name=name, email=email):
                self.fill_in(name, email)
                self.submit()
                self.assertIn("Error", self.browser.title)
                for field in ("name", "email"):
                    marked = self.field(field).get_attribute("aria-invalid")
                    self.assertEqual(marked, "true" if field in wrong else None)
                    if field in wrong:
                        told = self.field(self.field(field).get_attribute("aria-describedby"))
                        self.assertTrue(told.is_displayed() and len(told.text) > 10, told.text)
                self.assertEqual(self.field("name").get_attribute("value"), name.strip())
                self.assertEqual(self.field("email").get_attribute("value"), email)
                self.assertEqual(self.focused().get_attribute("id"), wrong[0])
                self.assertIsNone(self.token())
        self.fill_in(odd, good)
        self.submit()
        self.assertEqual(self.service.get("/api/v1/me", self.token())["name"], odd)

    def test_pages_that_say_no(self):
        self.show_as(width=360, height=740, text=32)
        self.browser.execute_script("document.getElementsByName('form_token')[0].remove()")
        self.fill_in("Eve", "eve@mail.example")
        self.submit()
        self.assertEqual(self.heading(), "Not signed in")
        self.check_layout("refused")
        self.open(self.begun["login_url"] + "x")
        self.assertEqual(self.heading(), "This sign-in is over")
        self.check_layout("over")


if __name__ == "__main__":
    unittest.main(verbosity=2)
