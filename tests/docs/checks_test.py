"""The checks of the pages see what is wrong with a page, and pass what is right."""
import os
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import links  # noqa: E402
import public_functions  # noqa: E402
import snippets  # noqa: E402

SOURCE = os.path.dirname(os.path.dirname(HERE))


def block(marker, language, *lines):
    return "\n".join([marker, "```" + language, *lines, "```", ""])


class Snippets(unittest.TestCase):
    def faults(self, page):
        return snippets.faults_of(page, SOURCE, "/nonexistent")[0]

    def expect_fault(self, words, *pages):
        faults = self.faults("\n".join(pages))
        self.assertEqual(len(faults), 1, faults)
        self.assertIn(words, faults[0])

    def test_a_block_without_a_comment_is_a_fault(self):
        for language in ("", "cpp", "java", "python", "cmake", "sh", "console", "json"):
            self.expect_fault("nothing says", block("", language, "x"))
            self.expect_fault("nothing says", block("<!-- trust me -->", language, "x"))

    def test_a_comment_further_up_does_not_count(self):
        self.expect_fault("nothing says", "<!-- run -->\nwords\n", block("", "sh", "true"))

    def test_a_sample_holds_no_commands(self):
        self.assertEqual(self.faults(block("", "text", "a --> b")), [])
        self.expect_fault("commands", block("", "text", "$ rm"))

    def test_an_excerpt_is_in_its_file(self):
        marker = "<!-- from examples/undistort.cpp -->"
        self.assertEqual(self.faults(block(marker, "cpp", "  JSON result;", "// ...", "return 0;")), [])
        self.expect_fault("not in the file", block(marker, "cpp", "JSON results;"))
        self.expect_fault("not in the file", block(marker, "cpp", "return 0;", "// ...", "JSON result;"))
        self.expect_fault("not in the file", block(marker, "cpp", "JSON result;", "return 0;"))

    def test_an_excerpt_is_of_a_file_that_is_built(self):
        self.expect_fault("there is no file", block("<!-- from examples/none.cpp -->", "cpp", "x"))
        self.expect_fault("neither built nor run", block("<!-- from CHANGELOG.md -->", "cpp", "# Changelog"))

    def test_commands_succeed(self):
        self.assertEqual(self.faults(block("<!-- run -->", "sh", "true", "echo")), [])
        self.expect_fault("status 1", block("<!-- run -->", "sh", "false", "true"))
        self.expect_fault("status 3", block("<!-- run -->", "console", "$ exit 3"))
        self.expect_fault("status 1", "<!-- prepare:\nfalse\n-->\n")

    def test_commands_of_a_page_share_a_folder(self):
        page = "<!-- prepare:\necho 1 > file\n-->\n" + block("<!-- run -->", "sh", "cat file")
        self.assertEqual(self.faults(page), [])

    def test_commands_print_what_is_said(self):
        def session(*said):
            return block("<!-- run -->", "console", "$ printf 'a 1.5\\nb\\nc -2\\n'", *said)
        for said in ((), ("a 7", "b", "c 3"), ("...", "c 3"), ("a 1", "..."), ("...", "b", "...")):
            self.assertEqual(self.faults(session(*said)), [], said)
        for said in (("a 7", "b"), ("b", "..."), ("...", "d"), ("a 7", "b", "c 3", "d"), ("...", "c 3", "b"),
                     ("a", "...")):
            self.assertEqual(len(self.faults(session(*said))), 1, said)

    def test_without_a_camera_only_the_camera_is_missed(self):
        marker = "<!-- needs a camera -->"
        say = "echo cannot open webcam"
        self.assertEqual(self.faults(block(marker, "console", f"$ {say} --webcam 0; exit 1")), [])
        self.expect_fault("another reason", block(marker, "console", "$ echo no such option; exit 1"))
        self.expect_fault("another reason", block(marker, "console", f"$ {say}"))
        self.expect_fault("no command", block(marker, "console", "$ V=1"))

    def test_without_a_camera_or_a_stream_other_programs_miss_no_more_either(self):
        marker = "<!-- needs a camera -->"
        for said in ("[v4l2] Cannot open video device /dev/video60: none", "Cannot identify device '/dev/video60'.",
                     "ERROR: cannot open GStreamer stream of host"):
            self.assertEqual(self.faults(block(marker, "console", f'$ echo "{said}"; exit 1')), [])
        self.assertEqual(self.faults(block(
            marker, "console", '$ [ /dev/video1 = /dev/video""61 ] && echo cannot open webcam; exit 1')), [])
        self.expect_fault("another reason", block(marker, "console", "$ echo ffmpeg: command not found; exit 127"))

    def test_scripts_exist(self):
        self.assertEqual(self.faults(block("<!-- scripts -->", "sh", "scripts/build dev # words")), [])
        self.expect_fault("no program", block("<!-- scripts -->", "sh", "scripts/built"))
        self.expect_fault("no program", block("<!-- scripts -->", "sh", "build/bin/none"))

    def test_json_has_the_keys_and_kinds_of_real_output(self):
        real = '{"a": 1, "rows": 3, "list": [1, 2], "text": "3 views", "object": {"b": null}, ' \
            '"hash": "85944171f73967e8"}'
        prepare = f"<!-- prepare:\necho '{real}' > real.json\n-->\n"

        def page(text):
            return prepare + block("<!-- like real.json -->", "json", text)
        for right in (real, real.replace("1,", "2.5,", 1), real.replace("[1, 2]", "[7]"), real.replace("3 v", "4 v"),
                      real.replace("859", "cbf")):
            self.assertEqual(self.faults(page(right)), [], right)
        for wrong in (real.replace('"a"', '"c"'), real.replace('"a": 1, ', ""), real.replace("[1, 2]", "[]"),
                      real.replace("[1, 2]", "[1, 2, 3]"), real.replace("null", "0"), real.replace("views", "view"),
                      real.replace('"rows": 3', '"rows": 4'), real.replace("859", "CBF"), real[:-1]):
            self.assertEqual(len(self.faults(page(wrong))), 1, wrong)

    def test_a_block_ends(self):
        with self.assertRaises(snippets.Fault):
            snippets.blocks_of("```text\nx\n")


HEADER = """
/// Not this(): void Comment();
#define MACRO(x) x
class EXPORTED Thing {
 public:
  using Listener = std::function<void(int)>;
  Thing(const Thing&) = delete;
  explicit Thing(int size) : size_(size) { Inline(); }
  EXPORTED static std::vector<int> Both(std::string a = "{;");
  void Both(int);
  static constexpr int NUMBER = f(3);
 private:
  void Hidden();
};
struct Open {
  bool Free() const;
};
namespace words {
EXPORTED void said(const char* format, ...) __attribute__((format(printf, 1, 2)));
}
"""
JAVA = """
package p;
/** Not this(). */
public final class Thing {
  @Deprecated public int shown() { return hidden(); }
  public static final int X = f(1);
  int packagePrivate() { return 1; }
  private int hidden() { return 1; }
}
"""


class PublicFunctions(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.header = self.write("Thing.h", HEADER)

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = os.path.join(self.folder.name, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return path

    def test_are_those_that_others_can_call(self):
        self.assertEqual(public_functions.functions_of(self.header), {"Thing", "Both", "Free", "said"})
        self.assertEqual(public_functions.functions_of(self.write("Thing.java", JAVA)), {"shown"})

    def test_are_all_on_the_page_and_no_others(self):
        page = "### Thing.h\n\n| functions | are | |\n|---|---|---|\n| `Thing`, `Both`, `Free` | thread-safe | |\n"
        complete = page + "| `said` | reentrant | |\n"
        self.assertEqual(public_functions.faults_of(complete, [self.header])[0], [])
        self.assertEqual(len(public_functions.faults_of(page, [self.header])[0]), 1)
        self.assertEqual(len(public_functions.faults_of(complete + "| `gone` | once | |\n", [self.header])[0]), 1)
        self.assertEqual(len(public_functions.faults_of(complete.replace("reentrant", "fine"), [self.header])[0]), 1)
        self.assertEqual(len(public_functions.faults_of(complete + "### Gone.h\n", [self.header])[0]), 1)


class Links(unittest.TestCase):
    def test_lead_somewhere_and_reach_every_page(self):
        with tempfile.TemporaryDirectory() as folder:
            os.mkdir(folder + "/docs")
            pages = {"README.md": "[a](docs/a.md#two-words) [b](CONTRIBUTING.md) [c](https://example.org)",
                     "CONTRIBUTING.md": "", "docs/a.md": "# Two words\n[up](../README.md)"}

            def faults(**changes):
                for name, text in {**pages, **{key.replace("_", "."): text for key, text in changes.items()}}.items():
                    with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                        file.write(text)
                return links.faults_of(folder)
            self.assertEqual(faults(), [])
            self.assertEqual(len(faults(README_md="[a](docs/a.md)")), 1)
            self.assertEqual(len(faults(README_md=pages["README.md"] + "[d](docs/d.md)")), 1)
            self.assertEqual(len(faults(README_md=pages["README.md"].replace("two", "too"))), 1)


if __name__ == "__main__":
    unittest.main()
