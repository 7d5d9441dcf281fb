// Whether switches over the sealed types and enums of ours think of each case.
import {lineOf, nodesOfType} from './grammar.mjs';
import {subtypesOf, typeIn} from './dart_model.mjs';

// Switches of one file of `model` that leave something out, as lines of text.
export function faultsInSwitches(model, file) {
  const faults = [];
  for (const node of nodesOfType(file.root, 'switch_statement', 'switch_expression')) {
    const cases = nodesOfType(node, 'variable_pattern', 'constant_pattern');
    const names = cases.map(each => each.type === 'variable_pattern'
      ? typeIn(each) : each.text);
    if (names.includes('_') || /\bdefault\s*:/.test(node.text)) continue;
    const types = [...model.types.values()];
    const whole = types.find(({name, kind}) => kind === 'enum' &&
                               names.some(each => each.startsWith(`${name}.`)))
      ?? types.find(type => subtypesOf(model, type).some(({name}) => names.includes(name)));
    if (!whole) continue;
    const wanted = whole.kind === 'enum'
      ? whole.members.filter(({kind}) => kind === 'constant')
          .map(({name}) => `${whole.name}.${name}`)
      : subtypesOf(model, whole).map(({name}) => name);
    for (const name of wanted) {
      if (!names.includes(name)) {
        faults.push(`${file.path}:${lineOf(node)}: the switch has no case ${name}`);
      }
    }
  }
  return faults;
}
