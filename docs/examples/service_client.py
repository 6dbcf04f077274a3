"""A client of the web service, from its description (WSDL); needs python3-zeep."""
import zeep
from zeep.xsd import SkipValue  # a value to leave out; the library wants every one named

NAMESPACE = "urn:xmethods-lumows"
BINDING = f"{{{NAMESPACE}}}lumows"
ENCODING = "http://schemas.xmlsoap.org/soap/encoding/"
PREFIXES = {
    "SOAP-ENV": zeep.ns.SOAP_ENV_11,
    "SOAP-ENC": ENCODING,
    "xsi": zeep.ns.XSI,
    "xsd": zeep.ns.XSD,
    "ns": NAMESPACE,
}


class Encoded(zeep.Plugin):
    """States the encoding: the library reads that of the description and does not write it."""

    def egress(self, envelope, http_headers, operation, binding_options):
        body = envelope.find(f"{{{zeep.ns.SOAP_ENV_11}}}Body")
        body.set(f"{{{zeep.ns.SOAP_ENV_11}}}encodingStyle", ENCODING)
        return envelope, http_headers


def connect(description, url):
    """The service at an address; its operations are its items. They raise what goes wrong."""
    transport = zeep.Transport(operation_timeout=30)
    transport.session.headers["Accept-Encoding"] = "identity"  # the service compresses nothing
    client = zeep.Client(description, transport=transport, plugins=[Encoded()])
    for prefix, name in PREFIXES.items():  # the simulator wants those of the usual client
        client.set_ns_prefix(prefix, name)
    return client.create_service(BINDING, url)
