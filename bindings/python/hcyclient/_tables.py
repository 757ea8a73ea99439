# SPDX-License-Identifier: Apache-2.0
"""Results that are tables."""
from __future__ import annotations

from typing import Any, Mapping

import numpy as np


def records(structs: Any) -> list[dict[str, Any]]:
    """The elements of a struct array, however many there are.

    Parameters
    ----------
    structs : dict, list of dicts, or structured array
        A result that is a struct array. A dict is a struct array of one element.

    Returns
    -------
    list of dict
        One for each element; those of a structured array come column after column.

    Raises
    ------
    TypeError
        If `structs` is something else.
    """
    if isinstance(structs, Mapping):
        return [dict(structs)]
    if isinstance(structs, (np.ndarray, np.void)) and structs.dtype.names is not None:
        names = structs.dtype.names
        return [dict(zip(names, element)) for element in np.asarray(structs).ravel('F')]
    if isinstance(structs, (list, tuple)) and all(isinstance(one, Mapping) for one in structs):
        return [dict(one) for one in structs]
    raise TypeError(f'records() takes a dict, a list of dicts or a structured array, not '
                    f'{type(structs).__name__}')
