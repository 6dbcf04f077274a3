"""Calls every operation that the description holds, with a value for every child.
usage: description_client.py DESCRIPTION URL; needs docs/examples/ among python's paths

For each it prints five fields with tabs between them: OPERATION, "OPERATION VALUE|VALUE", as the
simulator's log has it, the names of the children that are sent and of those of the answer, and the
answer's children as they travelled.
"""
import sys

import zeep
from service_client import BINDING, connect

# What the simulated home knows; every other child is sent its own name.
VALUES = {
    "sessionid": "DEMO-SESSION",
    "username": "demo",
    "user": "demo",
    "pass": "demo",
    "pin": "1234",
    "idobject": "LIVING-LAMP",
    "idobjects": "LIVING-LAMP",
}
# What an operation needs is done by another one first.
FIRST = ("service-attach2neighbour", "service-keltoclimateeventsettimeschedule")
LAST = "service-detach2neighbour"


def names(message):
    return [name for name, _ in message.body.type.elements]


description, url = sys.argv[1:]
operations = zeep.Client(description).wsdl.bindings[BINDING].all()
service = connect(description, url)
for name in sorted(operations, key=lambda name: (name not in FIRST, name == LAST)):
    sent = names(operations[name].input)
    answered = names(operations[name].output)
    values = {child: VALUES.get(child, child) for child in sent}
    answer = service[name](**values)
    if len(answered) == 1:  # the library hands out the one child's value alone
        answer = {answered[0]: answer}
    request = " ".join([name] + ["|".join(values.values())] * bool(values))
    children = "".join(f"<{child}>{answer[child]}</{child}>" for child in answered)
    print(name, request, " ".join(sent), " ".join(answered), children, sep="\t")
