#!/usr/bin/env python3
"""Which changes the mutation check makes of a text, which of them it tries, and by which tests first."""

import contextlib
import io
import sys
import unittest
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import mutationCheck  # noqa: E402
from mutationCheck import changes_of, drawn  # noqa: E402


def lines_of(kind, *lines):
    """What becomes of a text by changes of that kind, without what is around."""
    text = "\n".join(lines) + "\n"
    return [mutationCheck.told(change.after) for change in changes_of("study/a.cpp", text) if change.kind == kind]


class Changes(unittest.TestCase):
    def test_operators_turn_into_their_neighbours(self):
        self.assertEqual(["if (a <= b && c)", "if (a < b || c)"], lines_of("operator", "    if (a < b && c)"))
        self.assertEqual(["--done;"], lines_of("operator", "    ++done;"))
        self.assertEqual(["return x - 1;"], lines_of("operator", "    return x + 1;"))
        self.assertEqual(["while (x)"], lines_of("operator", "    while (!x)"))
        self.assertEqual(["return a == b;"], lines_of("operator", "    return a != b;"))

    def test_what_only_looks_like_an_operator_stays(self):
        for line in ["    std::vector<QString> all;", "    bits >>= 4;", "    bits <<= 4;", "    return a <=> b;",
                     "    const QString &name = f(-1, *here, &there);", "    take(Card &&card);",
                     "    auto operator<=>(const Day &) const = default;", "    return to->name;"]:
            with self.subTest(line=line):
                self.assertEqual([], lines_of("operator", line))

    def test_texts_are_not_subtracted(self):
        self.assertEqual([], lines_of("operator", '    return name + u"."_s;', '    return u"a"_s + name;'))

    def test_constants_become_others(self):
        self.assertEqual(["wait(61);"], lines_of("constant", "    wait(60);"))
        self.assertEqual(["wait(61s);"], lines_of("constant", "    wait(60s);"))
        self.assertEqual(["return c < 0x1101;"], lines_of("constant", "    return c < 0x1100;"))
        self.assertEqual(["part(1.5);"], lines_of("constant", "    part(0.5);"))
        self.assertEqual(["askNext(true);"], lines_of("constant", "    askNext(false);"))
        self.assertEqual(['say(u"Locked.~"_s);'], lines_of("constant", '    say(u"Locked."_s);'))
        self.assertEqual(["split(u'}');"], lines_of("constant", "    split(u'|');"))

    def test_what_nobody_sees_stays(self):
        for line in ["// 10 < 20", "    f(); // 10 < 20", '#include "a1.h"', '    qCWarning(log, "%d of 3",',
                     "    static_assert(2 < 3);",
                     "    name10 = other;", '    parse("1 < 2");', '    total = checkedAdd(total, more, "total");']:
            with self.subTest(line=line):
                self.assertEqual([], lines_of("operator", line) + lines_of("constant", line))

    def test_a_statement_of_the_log_ends_where_its_bracket_does(self):
        self.assertEqual(["wait(6);"], lines_of("constant", '    qCWarning(log, "%d",', "              3);", "    wait(5);"))

    def test_neighbouring_statements_change_places(self):
        self.assertEqual(["save(); | count();"], lines_of("order", "    count();", "    save();"))
        self.assertEqual([], lines_of("order", "    count();", "        save();"))
        self.assertEqual([], lines_of("order", "    count();", "", "    save();"))
        self.assertEqual([], lines_of("order", "    void count();", "    void save();"))
        self.assertEqual([], lines_of("order", "    const auto x = f();", "    return x;"))

    def test_assignments_change_places_only_where_one_needs_the_other(self):
        self.assertEqual([], lines_of("order", "    a = QString();", "    b = 0;"))
        self.assertEqual([], lines_of("order", '    status = text(u"locked");', "    mode = Mode::Locked;"))
        self.assertEqual(["b = next(); | a = 0;"], lines_of("order", "    a = 0;", "    b = next();"))
        self.assertEqual(["b = a; | a = 0;"], lines_of("order", "    a = 0;", "    b = a;"))

    def test_arguments_and_outcomes_change_places(self):
        self.assertEqual(["inBoth(russian, english);"], lines_of("order", "    inBoth(english, russian);"))
        self.assertEqual([], lines_of("order", "void f(int a, int b)", "    f(a, a);"))
        self.assertEqual(["return a ? Mode::Locked : Mode::Ready;"],
                         lines_of("order", "    return a ? Mode::Ready : Mode::Locked;"))

    def test_a_change_is_named_by_its_function_and_put_where_it_belongs(self):
        text = "int Card::age(int day)\n{\n    count();\n    return day + 1;\n}\n"
        change = next(change for change in changes_of("study/Card.cpp", text) if change.kind == "operator")
        self.assertEqual("study/Card.cpp Card::age: return day + 1;  =>  return day - 1;", change.key())
        self.assertEqual("study/Card.cpp:4 Card::age: return day + 1;  =>  return day - 1;", str(change))
        self.assertEqual(text.replace("day + 1", "day - 1"), mutationCheck.changed(text, change))


class Drawing(unittest.TestCase):
    LONG = "".join(f"    wait({number});\n    x = a{number} < b;\n" for number in range(40))

    def changes(self, more=""):
        return [*changes_of("engine/long.cpp", self.LONG + more), *changes_of("study/short.cpp", "    wait(1);\n" * 20)]

    def test_follows_from_the_seed(self):
        self.assertEqual(drawn(self.changes(), 10, 1), drawn(self.changes(), 10, 1))
        self.assertNotEqual(drawn(self.changes(), 10, 1), drawn(self.changes(), 10, 2))

    def test_gives_each_file_its_share_and_each_line_one_turn(self):
        files = drawn(self.changes(), 10, 1)
        self.assertEqual({"engine/long.cpp": 8, "study/short.cpp": 2}, {file: number for file, (number, _) in files.items()})
        self.assertEqual({"engine/long.cpp": 6, "study/short.cpp": 1},
                         {file: number for file, (number, _) in drawn(self.changes(), 7, 1).items()})
        for _, changes in files.values():
            self.assertEqual(1, max(Counter(change.first for change in changes).values()))

    def test_asks_for_no_more_than_there_is(self):
        self.assertEqual(100, sum(number for number, _ in drawn(self.changes(), 1000, 1).values()))

    def test_a_change_keeps_its_turn_when_others_come(self):
        before = drawn(self.changes(), 10, 1)["engine/long.cpp"][1]
        after = [change for change in drawn(self.changes("    other();\n    more();\n"), 10, 1)["engine/long.cpp"][1]
                 if change in before]
        self.assertEqual([change for change in before if change.kind == "operator"],
                         [change for change in after if change.kind == "operator"])


class Tallying(unittest.TestCase):
    def test_what_does_not_compile_is_replaced_and_what_survives_is_named(self):
        text = "".join(f"    wait({number});\n" for number in range(1, 5))
        first, second, third, spare = (change for change in changes_of("study/a.cpp", text) if change.kind == "constant")
        tally = mutationCheck.Tally({"study/a.cpp": (2, [first, second, third, spare])})
        with contextlib.redirect_stdout(io.StringIO()) as said:
            self.assertEqual([first, second, None], [tally.next(), tally.next(), tally.next()])
            tally.note(first, "not compiling", 1)
            self.assertEqual([third, None], [tally.next(), tally.next()])
            tally.note(second, "tst_a waits", 1)
            tally.note(third, "survived", 1)
        self.assertIn("survived: study/a.cpp:3 : wait(3);  =>  wait(4);", said.getvalue())
        self.assertEqual([third], tally.survivors())
        self.assertEqual("1 noticed, 1 survived, 1 not compiling", tally.sentence())
        self.assertIn("study/a.cpp:2 : wait(2);  =>  wait(3);\n    tst_a waits\n", tally.report())


class Tests(unittest.TestCase):
    def test_those_of_the_same_name_come_first_then_the_quick_ones(self):
        seconds = {"tst_session": 3, "tst_RollingCopies": 4, "tst_tasks": 1, "tst_copyThinning": 5, "tst_thinningOneCopy": 1}
        self.assertEqual(["tst_copyThinning", "tst_thinningOneCopy", "tst_tasks", "tst_session", "tst_RollingCopies"],
                         mutationCheck.best_first(seconds, "study/copyThinning.cpp"))
        self.assertEqual("tst_RollingCopies", mutationCheck.best_first(seconds, "study/CopiesOfRecords.cpp")[0])


class WithoutEffect(unittest.TestCase):
    def test_is_read_with_its_reasons(self):
        self.assertEqual({"a f: x  =>  y": "It is so.", "b g: x  =>  y": ""},
                         mutationCheck.without_effect("# all\n\na f: x  =>  y\n    It is\n    so.\nb g: x  =>  y\n"))

    def test_names_only_changes_that_there_are_each_with_a_reason(self):
        reasons = mutationCheck.without_effect(mutationCheck.WITHOUT_EFFECT.read_text(encoding="utf-8"))
        keys = {change.key() for change in mutationCheck.all_changes()}
        self.assertGreater(len(keys), 1000, "the sources were not found")
        self.assertEqual([], [key for key, reason in reasons.items() if key not in keys or not reason])


if __name__ == "__main__":
    unittest.main()
