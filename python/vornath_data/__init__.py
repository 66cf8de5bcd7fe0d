from .errors import *
from .types import Type
from .values import *
