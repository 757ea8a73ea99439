# SPDX-License-Identifier: Apache-2.0
"""All settings are in pyproject.toml. A wheel that holds the shared library is for its platform only,
but for every version of Python, since nothing is compiled against the interpreter."""
import pathlib
import sysconfig

from setuptools import Distribution, setup


class PlatformDistribution(Distribution):
    def has_ext_modules(self):
        return True


options = {}
if (pathlib.Path(__file__).parent / 'hcyclient/libhcyclient.so.1').exists():
    from wheel.bdist_wheel import bdist_wheel

    class PlatformWheel(bdist_wheel):
        def get_tag(self):
            # Not manylinux: the system must have a libcurl with Debian's symbol versions.
            return 'py3', 'none', sysconfig.get_platform().replace('-', '_').replace('.', '_')

    options = {'cmdclass': {'bdist_wheel': PlatformWheel}, 'distclass': PlatformDistribution}

setup(**options)
