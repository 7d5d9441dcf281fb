// The pieces of a Dart file that have local names, and those names.
import {childrenOfType, nodesIn, nodesOfType} from './grammar.mjs';
import {typeIn} from './dart_model.mjs';

const kScopes = new Set(['block', 'function_expression', 'for_statement', 'for_element',
                         'switch_statement_case', 'lambda_expression']);

// The node in which a name that `node` declares can be seen; null is the unit.
function scopeOf(node) {
  if (node.type === 'catch_parameters') return node.parent.nextNamedSibling;
  let at = node.parent;
  while (at && !kScopes.has(at.type)) at = at.parent;
  return at;
}

// What a signature or a body declares for itself: by name, each with its type
// and its scope.
export function localsIn(nodes) {
  const locals = new Map();
  for (const node of nodes.flatMap(nodesIn)) {
    const add = (name, type) => {
      if (!name) return;
      locals.set(name, [...(locals.get(name) ?? []), {type, scope: scopeOf(node)}]);
    };
    const last = () => childrenOfType(node, 'identifier').at(-1)?.text;
    switch (node.type) {
      case 'formal_parameter':
        add(last() ?? nodesOfType(node, 'identifier').at(-1)?.text, typeIn(node));
        break;
      case 'initialized_variable_definition':
        add(node.childForFieldName('name')?.text, typeIn(node));
        break;
      case 'for_loop_parts':
        if (typeIn(node)) add(node.childForFieldName('name')?.text, typeIn(node));
        break;
      case 'variable_pattern':
        add(last(), typeIn(node));
        break;
      case 'catch_parameters': {
        const on = node.parent.previousNamedSibling;
        const [error, trace] = node.namedChildren.map(child => child.text);
        add(error, on?.type === 'type_identifier' ? on.text : 'Object');
        add(trace, 'StackTrace');
        break;
      }
      case 'local_function_declaration':
        add(nodesOfType(node, 'function_signature')[0]
          ?.childForFieldName('name').text, '');
    }
  }
  return locals;
}

// The type of the local that `node` names, as it is written; null when it names
// none.
export function localType(locals, node) {
  const candidates = locals.get(node.text);
  if (!candidates) return null;
  for (let at = node.parent; at; at = at.parent) {
    const found = candidates.find(({scope}) => scope === at);
    if (found) return found.type;
  }
  return candidates.find(({scope}) => scope === null)?.type ?? null;
}

// Each piece of a file that has locals of its own, as {nodes, owner, locals}.
export function* unitsOf(file) {
  const visit = function* (container, owner) {
    for (const child of container.namedChildren) {
      if (child.type === 'function_body') continue;
      const body = child.childForFieldName('body');
      if (body && /_body$/.test(body.type)) {
        yield* visit(body, file.types.find(type => type.node === child) ?? null);
        continue;
      }
      const next = child.nextNamedSibling;
      const nodes = next?.type === 'function_body' ? [child, next] : [child];
      yield {nodes, owner, locals: localsIn(nodes)};
    }
  };
  yield* visit(file.root, null);
}
