# SPDX-License-Identifier: Apache-2.0
"""How Sphinx makes the website from the guides and the comments; script/docs runs it."""
import ctypes
import pathlib
import sys
from unittest import mock

import numpy  # before ctypes is replaced: it uses ctypes itself

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / 'docs/site'), str(ROOT / 'bindings/python')]
# The Python package is imported for its docstrings, and needs no library for them.
with mock.patch.multiple(ctypes, PyDLL=mock.MagicMock(), CDLL=mock.MagicMock()):
    import hcyclient

project = 'hcyclient'
version = release = hcyclient.__version__
extensions = ['myst_parser', 'breathe', 'sphinx.ext.autodoc', 'sphinx.ext.napoleon',
              'reference']

# The pages are where the links between them expect each other: in the source directory.
root_doc = 'README'
include_patterns = ['*.md', 'docs/*.md', 'docs/site/**.md', 'server/README.md', 'bench/README.md',
                    'bindings/python/README.md']
exclude_patterns = ['build']

myst_heading_anchors = 4
default_role = 'literal'
smartquotes = False  # they would also turn the two hyphens of an option into a dash

# Links that break are errors, but for the names of types in signatures: those of the standard
# libraries, of templates and of annotations have no page here.
nitpicky = True
nitpick_ignore_regex = [('(c|cpp):identifier', '.*'), ('py:.*', '.*')]

breathe_projects = {'hcyclient': str(ROOT / 'build/docs/xml')}
breathe_default_project = 'hcyclient'
breathe_domain_by_extension = {'h': 'c', 'hpp': 'cpp'}
breathe_show_include = False

autodoc_member_order = 'bysource'
autodoc_typehints = 'none'
napoleon_custom_sections = [('Attributes', 'params_style')]

html_theme = 'furo'
html_title = 'hcyclient'
html_static_path = ['site.css']
html_css_files = ['site.css']
html_extra_path = ['root']  # index.html
html_copy_source = False
html_use_index = False
html_domain_indices = False
html_show_copyright = False


def add_navigation(app, page, source):
    """README.md, which is also read elsewhere, has no list of the pages."""
    if page == root_doc:
        source[0] += (ROOT / 'docs/site/navigation.txt').read_text()


def setup(app):
    app.connect('source-read', add_navigation)
