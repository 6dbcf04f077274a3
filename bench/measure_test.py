"""How callgrind's report and a request's end are read."""

import sys
import unittest

sys.dont_write_bytecode = True
import measure  # noqa: E402

# The program runs 3 and 4 instructions and calls the library, which runs 20 in that call and 5 of its
# own accord. A name is written at its first use, which may be as the object of a call.
PROFILE = """\
# callgrind format
positions: line
events: Ir
summary: 32

ob=(1) /bin/program
fl=(1) ???
fn=(1) main
0 3
cob=(2) /lib/library.so
cfn=(2) work
calls=1 0
0 20
+1 4

ob=(2)
fn=(2)
0 20

fn=(3) start
* 5
"""


class CostByObject(unittest.TestCase):
    def test_leaves_out_what_calls_took(self):
        costs = measure.cost_by_object(PROFILE.splitlines())
        self.assertEqual(costs, {"/bin/program": 7, "/lib/library.so": 25})

    def test_refuses_a_report_that_does_not_add_up(self):
        with self.assertRaises(measure.Failure):
            measure.cost_by_object(PROFILE.replace("summary: 32", "summary: 33").splitlines())
        with self.assertRaises(measure.Failure):
            measure.cost_by_object(PROFILE.replace("summary: 32", "").splitlines())


class RequestEnd(unittest.TestCase):
    def test_of_a_daemon_is_an_empty_line(self):
        self.assertFalse(measure.is_complete(b"Request: X\n"))
        self.assertTrue(measure.is_complete(b"Request: X\n\n"))

    def test_of_a_call_is_its_length(self):
        call = b"POST / HTTP/1.1\r\nContent-Length: 2\r\n\r\n"
        self.assertFalse(measure.is_complete(call))
        self.assertFalse(measure.is_complete(call + b"x"))
        self.assertTrue(measure.is_complete(call + b"xy"))


if __name__ == "__main__":
    unittest.main()
