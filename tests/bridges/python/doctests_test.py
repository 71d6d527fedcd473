"""The examples in the package's own descriptions."""

import doctest

import nifikral


def load_tests(loader, tests, pattern):
    tests.addTests(doctest.DocTestSuite(nifikral))
    return tests
