// Nothing of its own: stands for the precompiled headers of the tests.
