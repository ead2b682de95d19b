"""Makes the API pages of the public headers."""
import pathlib
import re
import shutil
import subprocess
import tempfile

# Added to those of docs/Doxyfile; a later setting replaces an earlier one.
settings = """
INPUT = .
STRIP_FROM_PATH = .
STRIP_FROM_INC_PATH = .
IMAGE_PATH =
USE_MDFILE_AS_MAINPAGE = api.md
OUTPUT_DIRECTORY = ..
HTML_EXTRA_FILES =
HTML_DYNAMIC_MENUS = NO
SEARCHENGINE = NO
VERBATIM_HEADERS = NO
"""


def make(include, pages, source):
    """Makes the folder `pages` from the headers in the folder `include`."""
    pages.mkdir(parents=True)
    # In a folder of its own, because Doxygen cannot strip every path from its pages.
    with tempfile.TemporaryDirectory() as folder:
        headers = shutil.copytree(include, folder + "/include")
        shutil.copy(source + "/packaging/api.md", headers)
        everything = pathlib.Path(source, "docs", "Doxyfile").read_text("utf-8") + settings
        subprocess.run(["doxygen", "-"], check=True, cwd=headers, input=everything.encode())
        for page in pathlib.Path(folder, "html").iterdir():
            if page.suffix == ".html":
                page.write_text(re.sub(r"<script.*?</script>\n?", "", page.read_text("utf-8"), flags=re.DOTALL), "utf-8")
            if page.suffix != ".js":  # third-party work, and the pages do without it
                shutil.copy(page, pages)
