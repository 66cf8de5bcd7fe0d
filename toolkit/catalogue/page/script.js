'use strict';
// Search as you type, keys, and the place in the side bar. The page can be read without it.
(() => {
  const page = document.documentElement;
  const input = document.getElementById('search');
  const found = document.getElementById('found');
  const nothing = document.getElementById('nothing');
  const menu = document.getElementById('menu');
  const nav = document.getElementById('nav');
  page.classList.add('script');

  // What the search looks at: the words of a row, and the names of its group and its class.
  const rows = [...document.querySelectorAll('tr.field')].map((row) => {
    const group = row.closest('.group');
    const owner = row.closest('.class');
    const names = owner.dataset.name + ' ' + (group ? group.dataset.name : '');
    const words = [...row.querySelectorAll('.name, .about, .type')].map((cell) => cell.textContent);
    return { row, group, owner, text: (words.join(' ') + ' ' + names).toLowerCase() };
  });
  const containers = [...document.querySelectorAll('.group, .class, .slots')];
  const links = new Map([...nav.querySelectorAll('a')].map((link) => [link.hash.slice(1), link]));
  const total = rows.length;
  // The element that a link leads to; null for none.
  const elementOf = (hash) => {
    try {
      return document.getElementById(decodeURIComponent(hash.slice(1)));
    } catch (error) {
      return null;
    }
  };
  const count = (n) => n + (n === 1 ? ' field' : ' fields');

  function highlight(words) {
    if (!CSS.highlights) return;
    CSS.highlights.delete('found');
    if (words.length === 0) return;
    const ranges = [];
    for (const { row } of rows) {
      if (row.hidden) continue;
      const walker = document.createTreeWalker(row, NodeFilter.SHOW_TEXT);
      for (let node = walker.nextNode(); node; node = walker.nextNode()) {
        const text = node.data.toLowerCase();
        for (const word of words) {
          for (let at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + word.length)) {
            const range = new Range();
            range.setStart(node, at);
            range.setEnd(node, at + word.length);
            ranges.push(range);
          }
        }
      }
    }
    CSS.highlights.set('found', new Highlight(...ranges));
  }

  function search() {
    const words = input.value.toLowerCase().split(/\s+/).filter(Boolean);
    const isAll = words.length === 0;
    let shown = 0;
    const alive = new Set();
    for (const entry of rows) {
      const fits = words.every((word) => entry.text.includes(word));
      entry.row.hidden = !fits;
      if (!fits) continue;
      ++shown;
      for (let box = entry.row.parentElement; box; box = box.parentElement) alive.add(box);
    }
    for (const box of containers) box.hidden = !isAll && !alive.has(box);
    for (const link of links.values()) {
      const box = elementOf(link.hash);
      link.parentElement.hidden = Boolean(box) && box.hidden;
    }
    found.textContent = isAll ? count(total) : shown + ' of ' + count(total);
    nothing.hidden = shown !== 0;
    highlight(words);
  }

  function openMenu(open) {
    nav.classList.toggle('open', open);
    menu.setAttribute('aria-expanded', String(open));
  }

  // The row of the link in the address bar, shown even if the search had hidden it.
  function target() {
    const element = elementOf(location.hash);
    if (!element || !element.closest('[hidden]')) return;
    input.value = '';
    search();
    element.scrollIntoView();
  }

  // Goes to the next row, or to the one before, from where the reader is.
  function step(forward) {
    const visible = rows.map((entry) => entry.row).filter((row) => !row.hidden);
    if (visible.length === 0) return;
    const current = document.activeElement.closest('tr.field') || document.querySelector('tr.field:target');
    let index = visible.indexOf(current);
    if (index < 0) {
      const edge = document.querySelector('.top').getBoundingClientRect().bottom;
      const first = visible.findIndex((row) => row.getBoundingClientRect().top >= edge);
      index = first < 0 ? visible.length - 1 : first;
    } else {
      index = Math.min(visible.length - 1, Math.max(0, index + (forward ? 1 : -1)));
    }
    const row = visible[index];
    row.querySelector('a').focus({ preventScroll: true });
    row.scrollIntoView({ block: 'center', behavior: 'instant' });
  }

  input.addEventListener('input', search);
  menu.addEventListener('click', () => openMenu(!nav.classList.contains('open')));
  nav.addEventListener('click', (event) => { if (event.target.closest('a')) openMenu(false); });
  window.addEventListener('hashchange', target);

  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const typing = event.target === input;
    if (event.key === 'Escape') {
      if (nav.classList.contains('open')) {
        openMenu(false);
        menu.focus();
      } else if (input.value !== '' || typing) {
        input.value = '';
        search();
        input.blur();
      }
      return;
    }
    if (typing) {
      if (event.key === 'Enter' || event.key === 'ArrowDown') {
        event.preventDefault();
        input.blur();
        step(true);
      }
      return;
    }
    if (event.key === '/') {
      event.preventDefault();
      openMenu(false);
      input.focus();
      input.select();
    } else if (event.key === 'j' || event.key === 'k') {
      step(event.key === 'j');
    } else if ((event.key === 'ArrowDown' || event.key === 'ArrowUp') && document.activeElement.closest('tr.field')) {
      event.preventDefault();
      step(event.key === 'ArrowDown');
    }
  });

  // Marks in the side bar what is at the top of the window.
  let current = null;
  const onTop = new Set();
  const observer = new IntersectionObserver((entries) => {
    for (const entry of entries) {
      if (entry.isIntersecting) onTop.add(entry.target);
      else onTop.delete(entry.target);
    }
    // The first group there, or else the first class.
    const boxes = [...onTop].sort((a, b) => a.getBoundingClientRect().top - b.getBoundingClientRect().top);
    const box = boxes.find((each) => each.classList.contains('group')) || boxes[0];
    const link = box && links.get(box.id);
    if (!link || link === current) return;
    if (current) current.removeAttribute('aria-current');
    link.setAttribute('aria-current', 'true');
    current = link;
    const view = nav.getBoundingClientRect();
    const place = link.getBoundingClientRect();
    if (place.top < view.top || place.bottom > view.bottom) nav.scrollTop += place.top - view.top - view.height / 3;
  }, { rootMargin: '-80px 0px -75% 0px' });
  for (const box of document.querySelectorAll('.class, .group')) observer.observe(box);

  search();
  target();
})();
