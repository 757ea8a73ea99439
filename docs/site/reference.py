# SPDX-License-Identifier: Apache-2.0
"""A part of Sphinx for this website: checks that the reference is complete."""
import pathlib
from xml.etree import ElementTree

import hcyclient.testing
from sphinx.util import logging

# breathe does not know members of unions without a name. A page shows the declaration instead.
SHOWN_AS_CODE = ('hcyErrorInfo',)


def has_comment(member):
    return any(''.join(member.find(part).itertext()).strip()
               for part in ('briefdescription', 'detaileddescription'))


def members_of(definition):
    """Yield name and label of each public member of a class that has a comment."""
    name = definition.findtext('compoundname')
    for member in definition.iterfind('sectiondef/memberdef[@prot="public"]'):
        if has_comment(member) and name not in SHOWN_AS_CODE:
            yield f'{name}::{member.findtext("name")}', member.get('id')


def documented(xml):
    """Yield name and label of each class, member, function, type and constant of the headers."""
    for compound in ElementTree.parse(xml / 'index.xml').iterfind('compound'):
        kind, name, label = compound.get('kind'), compound.findtext('name'), compound.get('refid')
        if kind in ('class', 'struct'):
            definition = ElementTree.parse(xml / f'{label}.xml').find('compounddef')
            if definition.get('prot') == 'public':
                yield name, label
                yield from members_of(definition)
        elif kind in ('file', 'namespace'):
            for member in compound.iterfind('member'):
                if member.get('kind') in ('function', 'typedef', 'enumvalue'):
                    yield member.findtext('name'), member.get('refid')


def check(app, env):
    """Warn of what the headers document or the Python package exports, but no page describes."""
    xml = pathlib.Path(app.config.breathe_projects[app.config.breathe_default_project])
    labels = env.get_domain('std').anonlabels
    missing = {name for name, label in documented(xml) if label not in labels}
    for module in (hcyclient, hcyclient.testing):
        exported = {f'{module.__name__}.{name}' for name in module.__all__}
        missing |= exported - env.get_domain('py').objects.keys()
    for name in sorted(missing):
        logging.getLogger(__name__).warning('no page of the reference describes %s', name)


def setup(app):
    app.connect('env-check-consistency', check)
    return {'parallel_read_safe': True, 'parallel_write_safe': True}
