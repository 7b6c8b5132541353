"""Which changes are made to a source, and which aren't."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "script"))

from mutation import mutants, report  # noqa: E402


def shown(code):
    return [mutant.shown for mutant in mutants.find("room/file.cpp", code)]


class Finding(unittest.TestCase):
    def assert_found(self, code, *expected):
        self.assertCountEqual(shown(code), expected)

    def test_relations_move_their_border_or_are_negated(self):
        self.assert_found("bool f() { return a < b; }", "'a < b' -> 'a <= b'", "'a < b' -> 'a >= b'")
        self.assert_found("bool f() { return a >= b; }", "'a >= b' -> 'a > b'", "'a >= b' -> 'a < b'")
        self.assert_found("bool f() { return a == b; }", "'a == b' -> 'a != b'")

    def test_conditions_become_true_and_false(self):
        self.assert_found(
            "void f() { if (a.empty(b)) return; }",
            "'if (a.empty(b))' -> 'if (true)'",
            "'if (a.empty(b))' -> 'if (false)'",
        )

    def test_a_condition_isnt_negated_as_well(self):
        self.assert_found(
            "void f() { if (a <= b) return; }",
            "'if (a <= b)' -> 'if (true)'",
            "'if (a <= b)' -> 'if (false)'",
            "'a <= b' -> 'a < b'",
        )
        self.assert_found("void f() { if (!a) return; }", "'if (!a)' -> 'if (true)'", "'if (!a)' -> 'if (false)'")

    def test_a_condition_that_makes_a_variable_stays(self):
        self.assert_found("void f() { while (const int a = next(b)) return; }")

    def test_loops_arent_made_endless(self):
        self.assert_found("void f() { while (more(a)) return; }", "'while (more(a))' -> 'while (false)'")

    def test_arithmetic_and_bits(self):
        self.assert_found("int f() { return a + b(c); }", "'a + b(c)' -> 'a - b(c)'")
        self.assert_found("int f() { return a[i] % b; }", "'a[i] % b' -> 'a[i] / b'")
        self.assert_found("int f() { return a.x << b; }", "'a.x << b' -> 'a.x >> b'")
        self.assert_found("int f() { return ~a; }", "'~a' -> 'a'")
        self.assert_found("int f() { return -a; }", "'-a' -> 'a'")
        self.assert_found("int f() { return a - -b; }", "'a - -b' -> 'a + -b'", "'-b' -> 'b'")

    def test_booleans(self):
        self.assert_found("bool f() { return a && b; }", "'a && b' -> 'a || b'")
        self.assert_found("bool f() { return !a; }", "'!a' -> 'a'")
        self.assert_found("bool f() { return true; }", "'true' -> 'false'")

    def test_constants(self):
        self.assert_found("int a = 0;", "'a = 0' -> 'a = 1'")
        self.assert_found("int a = 1;", "'a = 1' -> 'a = 0'")
        self.assert_found("int a = 255;", "'a = 255' -> 'a = 256'")
        self.assert_found("unsigned a = 0x0FU;", "'a = 0x0FU' -> 'a = 0x10U'")
        self.assert_found("double a = 0.5;", "'a = 0.5' -> 'a = 1.5'")

    def test_calls_that_are_statements_are_left_out(self):
        self.assert_found("void f() { a.b->c(d); }", "'a.b->c(d);' -> ';'")
        self.assert_found("void f() { for (auto x : y) run<int>(x); }", "'run<int>(x);' -> ';'")
        self.assert_found("void f() { return a(b); }")

    def test_assignments_are_left_out_or_do_something_else(self):
        self.assert_found("void f() { *a = b; }", "'*a = b;' -> ';'")
        self.assert_found("void f() { a[i].b = c; }", "'a[i].b = c;' -> ';'")
        self.assert_found("void f() { a += b; }", "'a += b' -> 'a -= b'")
        self.assert_found("void f() { ++a; }", "'++a' -> '--a'")

    def test_declarations_are_left_alone(self):
        self.assert_found("int* a = b; const Type c(d); Type* e(f); auto&& g = h; Type i{j}; int k[4];")
        self.assert_found("template <int kN = 3, class T> struct A { A(); A& operator=(const A&) = delete; };")
        self.assert_found("using F = void (*)(int, char*);")

    def test_what_isnt_code_that_runs_is_left_alone(self):
        self.assert_found('static_assert(a < 4, "0 < 1"); // a = 1;\n#define B (a + 1)\n/* c(); */ [[aligned(1)]] D e;')
        self.assert_found("const char* text = \"a < b\"; char letter = '0';")

    def test_a_template_isnt_a_relation(self):
        self.assert_found("int f() { return static_cast<int>(a) > Pack<kB, 3>(c); }",
                          "'static_cast<int>(a) > Pack<kB, 3>(c)' -> 'static_cast<int>(a) >= Pack<kB, 3>(c)'",
                          "'static_cast<int>(a) > Pack<kB, 3>(c)' -> 'static_cast<int>(a) <= Pack<kB, 3>(c)'")  # fmt: skip

    def test_a_mutant_knows_its_place_and_its_line(self):
        code = "// first\nint f() {\n  return a +  // so\n         b;\n}\n"
        (mutant,) = mutants.find("room/file.cpp", code)
        self.assertEqual((mutant.line, mutant.column), (3, 12))
        self.assertEqual(mutant.identity, ("room/file.cpp", "return a +", "return a -"))
        self.assertEqual(mutant.apply(code), code.replace("+", "-"))


class Explaining(unittest.TestCase):
    def test_a_paragraph_is_the_reason_of_the_items_after_it(self):
        text = (
            "# Title\n\nWords.\n\n## `a/b.cpp`\n\nNobody\nlooks.\n\n- `` a || b ``\n  becomes `` a && b ``\n"
            "- `` 1 ``\n  becomes `` 0 ``\n\nAnother.\n\n- `` x ``\n  becomes `` y ``\n"
        )
        self.assertEqual(
            report.explanations(text),
            {
                ("a/b.cpp", "a || b", "a && b"): "Nobody looks.",
                ("a/b.cpp", "1", "0"): "Nobody looks.",
                ("a/b.cpp", "x", "y"): "Another.",
            },
        )

    def test_a_survivor_without_a_reason_is_refused(self):
        with self.assertRaises(ValueError):
            report.explanations("## `a/b.cpp`\n\n- `` x ``\n  becomes `` y ``\n")

    def test_what_is_written_is_read_again(self):
        found = mutants.find("a/b.cpp", "bool f() { return a || b; }")
        text = report.items(found).replace("`\n\n-", "`\n\nA reason.\n\n-")
        self.assertEqual(report.explanations(text), {found[0].identity: "A reason."})


if __name__ == "__main__":
    unittest.main()
