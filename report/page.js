(function () {
  'use strict';
  var tools = document.getElementById('tools');
  var find = document.getElementById('find');
  var found = document.getElementById('found');
  var boxes = Array.prototype.slice.call(tools.querySelectorAll('[data-filter]'));
  var entries = null;
  var isAsked = false;

  /* What is searched, read off the page once: entries of lists, and blocks with the names above them. */
  function readEntries() {
    entries = [];
    document.querySelectorAll('.list > li').forEach(function (node) {
      var has = [node.dataset.has, node.parentElement.dataset.has, node.querySelector('figure') && 'recorded'].join(' ');
      var section = node.closest('section').id;
      entries.push({ node: node, text: node.textContent.toLowerCase(), above: null, has: has, section: section });
    });
    var tree = document.querySelector('.tree');
    if (tree) readBlocks(tree, null, '');
  }

  function readBlocks(list, above, path) {
    Array.prototype.forEach.call(list.children, function (node) {
      var head = node.querySelector(':scope > details > summary, :scope > p');
      var items = node.querySelector(':scope > .items, :scope > details > .items');
      var name = path + head.querySelector('b').textContent.toLowerCase();
      var more = (head.textContent + (items ? ' ' + items.textContent : '')).toLowerCase();
      var isObserved = head.querySelector('.on') || (items && items.querySelector('.on'));
      var has = isObserved ? 'observed' : '';
      var entry = { node: node, text: name + ' ' + more, above: above, has: has, section: 'blocks' };
      entries.push(entry);
      var below = node.querySelector(':scope > details > ul');
      if (below) readBlocks(below, entry, name + '/');
    });
  }

  function isWanted(entry, words, filters) {
    for (var i = 0; i < words.length; ++i) if (entry.text.indexOf(words[i]) < 0) return false;
    return filters.every(function (filter) { return entry.has.indexOf(filter) >= 0; });
  }

  function search() {
    isAsked = false;
    if (!entries) readEntries();
    var words = find.value.toLowerCase().split(/\s+/).filter(Boolean);
    var filters = boxes.filter(function (box) { return box.checked; }).map(function (box) { return box.dataset.filter; });
    var isFiltered = words.length > 0 || filters.length > 0;
    var counts = {};
    entries.forEach(function (entry) { entry.isShown = false; });
    entries.forEach(function (entry) {
      if (isFiltered && !isWanted(entry, words, filters)) return;
      counts[entry.section] = (counts[entry.section] || 0) + 1;
      for (var one = entry; one && !one.isShown; one = one.above) one.isShown = true;
    });
    entries.forEach(function (entry) { entry.node.hidden = !entry.isShown; });
    document.body.classList.toggle('observed-only', filters.indexOf('observed') >= 0);
    tell(isFiltered, counts);
  }

  function tell(isFiltered, counts) {
    var all = 0;
    document.querySelectorAll('section').forEach(function (section) {
      var count = counts[section.id] || 0;
      var counted = section.querySelector('h2 > span');
      all += count;
      section.hidden = isFiltered && count === 0;
      if (counted) counted.textContent = (isFiltered ? count.toLocaleString('en') + ' of ' : '') + counted.dataset.of;
    });
    found.textContent = !isFiltered ? '' : all === 0 ? 'nothing found' : all.toLocaleString('en') + ' found';
  }

  function ask() {
    if (isAsked) return;
    isAsked = true;
    requestAnimationFrame(search);
  }

  /* A link leads to its place, whatever hides it. */
  function reveal() {
    var target = location.hash.length > 1 && document.getElementById(decodeURIComponent(location.hash.slice(1)));
    if (!target) return;
    if (target.closest('[hidden]')) {
      find.value = '';
      boxes.forEach(function (box) { box.checked = false; });
      search();
    }
    for (var node = target.parentElement; node; node = node.parentElement)
      if (node.tagName === 'DETAILS') node.open = true;
    target.scrollIntoView();
  }

  find.addEventListener('input', ask);
  boxes.forEach(function (box) { box.addEventListener('change', ask); });
  window.addEventListener('hashchange', reveal);
  document.addEventListener('keydown', function (event) {
    if (event.key === '/' && !event.ctrlKey && !event.metaKey && !event.altKey && document.activeElement !== find) {
      event.preventDefault();
      find.focus();
      find.select();
    } else if (event.key === 'Escape' && document.activeElement === find) {
      find.value = '';
      ask();
    }
  });
  tools.hidden = false;
  if (find.value || boxes.some(function (box) { return box.checked; })) ask();
})();
